#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace kqu::lives {

/// What says more exactly what happens; explained where the player or its world lets it happen.
using Values = std::array<int, 4>;

/// One event of a life. Those at 0 ms happen before the program starts.
struct Event {
    /// One of those in the table of kinds.
    std::string kind;
    /// Milliseconds after the start.
    int at = 0;
    /// Not at once, but at the start of the next pump of the event loop inside a handler.
    bool nested = false;
    Values values{};

    bool operator==(const Event&) const = default;
};

/// All that happens to one run of the program, in the order of time.
using Life = std::vector<Event>;

/// The life of a seed; always the same.
[[nodiscard]] Life MakeLife(std::uint64_t seed);

/// One line an event: time, "nested" or "now", kind, numbers.
[[nodiscard]] std::string ToText(const Life& life);
/// Raises std::runtime_error for a text that ToText doesn't write.
[[nodiscard]] Life FromText(std::istream& text);

} // namespace kqu::lives

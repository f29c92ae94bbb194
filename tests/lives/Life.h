#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace kqu::lives {

/// What can happen to the program. The numbers that say it more exactly are explained where the
/// player lets it happen.
enum class Kind {
    Post,
    Process,
    Press,
    Move,
    Release,
    Wheel,
    Outside,
    Ask,
    Source,
    Mount,
    Trouble,
    Function,
    Commands,
    Collapse,
    Jump,
    Screen,
    Echo,
    LookUpFile,
    Folder,
    Close,
    LoseDisplay,
    Preferences,
    Place,
};

/// One event of a life. Those at 0 ms happen before the program starts.
struct Event {
    Kind kind = Kind::Post;
    /// Milliseconds after the start.
    int at = 0;
    /// Not at once, but at the start of the next pump of the event loop inside a handler.
    bool nested = false;
    std::array<int, 4> values{};

    auto operator<=>(const Event&) const = default;
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

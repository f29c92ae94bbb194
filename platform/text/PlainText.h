#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::platform {

/// Any bytes as one plain line that can be laid out: every control character and line separator
/// becomes a blank, every byte that is no UTF-8 a replacement character. One character of the
/// source is one of the line, so that each place in the line has its place in the source.
struct PlainText {
    /// Where a character begins, in bytes.
    struct Place {
        std::size_t inSource;
        std::size_t inLine;
    };

    std::string utf8;
    /// One for each character, and behind them the end.
    std::vector<Place> places;

    explicit PlainText(std::string_view source);

    /// Number of characters.
    [[nodiscard]] std::size_t Length() const { return places.size() - 1; }
};

/// The start of a text, cut between two characters so that it is at most `bytes` long.
[[nodiscard]] std::string_view StartOf(std::string_view text, std::size_t bytes);

/// The end of a text, cut between two characters so that it is at most `bytes` long.
[[nodiscard]] std::string_view EndOf(std::string_view text, std::size_t bytes);

/// The text's start and end, each cut between two characters to at most `bytes`; the whole text if
/// it is no longer than both.
[[nodiscard]] std::string WithoutMiddle(std::string text, std::size_t bytes);

/// The text in UTF-16; a byte that is no UTF-8 becomes the replacement character.
[[nodiscard]] std::u16string ToUtf16(std::string_view text);

} // namespace kqu::platform

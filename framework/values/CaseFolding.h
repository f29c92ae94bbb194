#pragma once

#include <cstddef>
#include <string_view>

namespace kqu {

// Letter case by Unicode's simple folding, character by character and independent of the locale.
// Bytes that are no UTF-8 stand for themselves.

/// The same as FoldedCharacter, for a text that starts with a byte beyond ASCII.
[[nodiscard]] char32_t FoldedBeyondAscii(std::string_view text, std::size_t& length);

/// The folded form of the character at the start of `text`, which must not be empty; `length` is
/// set to the number of bytes that the character takes.
[[nodiscard]] inline char32_t FoldedCharacter(std::string_view text, std::size_t& length) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first >= 0x80)
        return FoldedBeyondAscii(text, length);
    length = 1;
    return first >= 'A' && first <= 'Z' ? first + char32_t{'a' - 'A'} : first;
}

} // namespace kqu

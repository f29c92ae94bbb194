#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kqu {

// Letter case by Unicode's simple folding, character by character and independent of the locale.
// Bytes that are no UTF-8 stand for themselves.

/// The folded form of the character at the start of `text`, which must not be empty; `length` is
/// set to the number of bytes that the character takes.
[[nodiscard]] char32_t FoldedCharacter(std::string_view text, std::size_t& length);

/// The text in folded form, to be compared and hashed, never shown.
[[nodiscard]] std::string Folded(std::string_view text);

/// Whether the text is ASCII without capital letters, and so its own folded form.
[[nodiscard]] bool IsFoldedAscii(std::string_view text);

} // namespace kqu

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The text functions. Text is UTF-8, but bytes that are not pass through unharmed. Where letter
// case is ignored it is folded character by character, without a folded copy, so that positions
// always are those of the text itself. Nothing here depends on a locale.

namespace kqu {

/// The number at the start of a text, 0 if there is none: blanks, a sign, decimal digits with one
/// point, an exponent. A number that is too large is infinite; words and hexadecimal digits are no
/// numbers.
[[nodiscard]] double Val(std::string_view text);

/// Plain decimal digits, with a minus sign for a negative number.
[[nodiscard]] std::string Str(std::int32_t number);

/// Where `find` stands in `text` for the first time, letter case ignored: the position of its first
/// byte, counted from 1; 0 if it does not occur. An empty `find` stands at 1.
[[nodiscard]] int InStr(std::string_view text, std::string_view find);

/// Whether `find` occurs in `text`, letter case ignored.
[[nodiscard]] bool Contains(std::string_view text, std::string_view find);

[[nodiscard]] bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// Every occurrence replaced, letter case ignored, in one pass from the left: what a replacement
/// brings about is not looked at again. An empty `find` occurs nowhere.
[[nodiscard]] std::string ReplaceAll(std::string_view text, std::string_view find,
                                     std::string_view replacement);

/// The same for bytes as they are.
[[nodiscard]] std::string ReplaceAllBytes(std::string_view text, std::string_view find,
                                          std::string_view replacement);

/// Field `n`, counted from 1, of a text that is split at a separator, letter case ignored. The
/// empty text for a field that is not there. An empty separator splits nothing.
[[nodiscard]] std::string NthField(std::string_view text, std::string_view separator, int n);

/// The number of fields: one more than there are separators, but none in an empty text, so that an
/// empty file has no line.
[[nodiscard]] int CountFields(std::string_view text, std::string_view separator);

/// A number in the form of a mask of '#', '0' and one point. There are as many decimals as places
/// behind the point, and all digits that the number has before it; a '0' prints a digit in any
/// case, a '#' none for a zero that leads or trails. The exact value is rounded to the nearest,
/// halves away from zero; what rounds to zero has no sign. What is no finite number gives a word.
[[nodiscard]] std::string Format(double number, std::string_view mask);

/// UTF-16; a byte that is no part of well-formed UTF-8 becomes the lone surrogate 0xDC00 + byte, so
/// that no two texts become one.
[[nodiscard]] std::u16string ToUtf16(std::string_view text);

} // namespace kqu

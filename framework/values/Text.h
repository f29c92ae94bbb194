#pragma once

#include "platform/text/PlainText.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kqu {

// Texts are bytes, by intention UTF-8. All comparing and searching is without regard to letter
// case, separators of fields included; bytes that are no UTF-8 survive unharmed.

/// The number at the start of a text, or 0: blanks, a sign, digits with one point, an exponent. Too
/// large a number is infinite. Independent of the locale; no words, no hexadecimal.
[[nodiscard]] double Val(std::string_view text);

/// Plain decimal digits, with a minus sign if negative.
[[nodiscard]] inline std::string Str(std::int32_t number) {
    return std::to_string(number);
}

/// Where `find` stands first in `text`, in bytes counted from 1; 0 if nowhere. An empty text is
/// found nowhere in an empty one and else at 1.
[[nodiscard]] int InStr(std::string_view text, std::string_view find);
[[nodiscard]] inline bool Contains(std::string_view text, std::string_view find) {
    return InStr(text, find) != 0;
}
[[nodiscard]] bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// Every occurrence replaced, in one pass from the left.
[[nodiscard]] std::string ReplaceAll(std::string_view text, std::string_view find,
                                     std::string_view replacement);

using platform::ToUtf16;
using platform::WithoutMiddle;

/// Field `number`, counted from 1, of the text split at the separator; empty past the last field.
/// An empty separator splits nothing.
[[nodiscard]] std::string NthField(std::string_view text, std::string_view separator, int number);
/// The number of fields; an empty text has none.
[[nodiscard]] int CountFields(std::string_view text, std::string_view separator);

/// The number by a mask of '#' (a digit if there is one), '0' (a digit always) and '.', behind
/// which every digit is written. Ties round away from zero; what rounds to zero has no sign.
/// Infinities and not-a-number give words.
[[nodiscard]] std::string Format(double number, std::string_view mask);

} // namespace kqu

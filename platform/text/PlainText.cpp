#include "platform/text/PlainText.h"

#include "platform/CDeleter.h"

#include <algorithm>
#include <glib.h>

namespace kqu::platform {

namespace {
constexpr std::string_view replacement = "\xEF\xBF\xBD";
constexpr std::string_view blank = " ";
constexpr gunichar lineSeparator = 0x2028;
constexpr gunichar paragraphSeparator = 0x2029;
/// No character of UTF-8 is longer.
constexpr std::size_t longestCharacter = 4;

bool IsPrintableAscii(char byte) {
    return byte >= ' ' && byte <= '~';
}

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

struct Character {
    std::size_t bytes;
    std::string_view shown;
};

Character CharacterAt(std::string_view rest) {
    if (IsPrintableAscii(rest.front()))
        return {1, rest.substr(0, 1)};
    const auto length = static_cast<gssize>(std::min(rest.size(), longestCharacter));
    const gunichar code = g_utf8_get_char_validated(rest.data(), length);
    if (rest.front() == '\0')
        return {1, blank};
    if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2))
        return {1, replacement};
    const auto bytes =
        static_cast<std::size_t>(g_utf8_skip[static_cast<unsigned char>(rest.front())]);
    const bool isBlank =
        g_unichar_iscntrl(code) || code == lineSeparator || code == paragraphSeparator;
    return {bytes, isBlank ? blank : rest.substr(0, bytes)};
}
} // namespace

PlainText::PlainText(std::string_view source) {
    utf8.reserve(source.size());
    places.reserve(source.size() + 1);
    std::size_t at = 0;
    while (at < source.size()) {
        const Character character = CharacterAt(source.substr(at));
        places.push_back({at, utf8.size()});
        utf8.append(character.shown);
        at += character.bytes;
    }
    places.push_back({source.size(), utf8.size()});
}

std::string_view StartOf(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    std::size_t cut = bytes;
    while (cut > 0 && bytes - cut < longestCharacter && IsContinuation(text[cut]))
        --cut;
    return text.substr(0, IsContinuation(text[cut]) ? bytes : cut);
}

std::string_view EndOf(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    std::size_t cut = text.size() - bytes;
    const std::size_t last = std::min(cut + longestCharacter, text.size());
    while (cut < last && IsContinuation(text[cut]))
        ++cut;
    return text.substr(cut == last ? text.size() - bytes : cut);
}

std::string WithoutMiddle(std::string text, std::size_t bytes) {
    if (text.size() <= 2 * bytes)
        return text;
    return std::string(StartOf(text, bytes)).append(EndOf(text, bytes));
}

std::u16string ToUtf16(std::string_view text) {
    const CPointer<char, g_free> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    glong length = 0;
    const CPointer<gunichar2, g_free> wide(
        g_utf8_to_utf16(valid.get(), -1, nullptr, &length, nullptr));
    return {wide.get(), wide.get() + length};
}

} // namespace kqu::platform

#include "framework/values/CaseFolding.h"

#include <glib.h>

#include <algorithm>
#include <memory>

namespace kqu {

namespace {
constexpr char32_t firstBeyondAscii = 0x80;
/// Where bytes that are no UTF-8 go, beyond all characters.
constexpr char32_t strayByteBase = 0x110000;

/// Simple folding: one character for one character. Where the full folding gives several, the
/// character stays, unless it has a plain small letter of its own.
char32_t FoldBeyondAscii(std::string_view character, char32_t code) {
    const std::unique_ptr<gchar, decltype(&g_free)> folded(
        g_utf8_casefold(character.data(), static_cast<gssize>(character.size())), &g_free);
    if (g_utf8_strlen(folded.get(), -1) == 1)
        return g_utf8_get_char(folded.get());
    constexpr char32_t capitalIWithDot = 0x130;
    return code == capitalIWithDot ? code : g_unichar_tolower(code);
}
} // namespace

char32_t FoldedCharacter(std::string_view text, std::size_t& length) {
    const auto first = static_cast<unsigned char>(text.front());
    length = 1;
    if (first < firstBeyondAscii)
        return first >= 'A' && first <= 'Z' ? first + char32_t{'a' - 'A'} : first;
    const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2))
        return strayByteBase + first;
    length = static_cast<std::size_t>(g_utf8_skip[first]);
    return FoldBeyondAscii(text.substr(0, length), code);
}

std::string Folded(std::string_view text) {
    std::string folded;
    folded.reserve(text.size());
    while (!text.empty()) {
        std::size_t length = 0;
        const char32_t character = FoldedCharacter(text, length);
        if (character >= strayByteBase) {
            folded += text.front();
        } else {
            char bytes[6];
            const gint count = g_unichar_to_utf8(character, bytes);
            folded.append(bytes, static_cast<std::size_t>(count));
        }
        text.remove_prefix(length);
    }
    return folded;
}

bool IsFoldedAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < firstBeyondAscii && !(c >= 'A' && c <= 'Z');
    });
}

} // namespace kqu

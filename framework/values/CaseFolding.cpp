#include "framework/values/CaseFolding.h"

#include "platform/CDeleter.h"

#include <glib.h>

namespace kqu {

namespace {
/// Where bytes that are no UTF-8 go, beyond all characters.
constexpr char32_t strayByteBase = 0x110000;

/// Simple folding: one character for one character. Where the full folding gives several, the
/// character stays, unless it has a plain small letter of its own.
char32_t Folded(std::string_view character, char32_t code) {
    const platform::CPointer<gchar, g_free> folded(
        g_utf8_casefold(character.data(), static_cast<gssize>(character.size())));
    if (g_utf8_strlen(folded.get(), -1) == 1)
        // Cherokee letters fold to capitals here, and the capitals to small ones.
        return g_unichar_tolower(g_utf8_get_char(folded.get()));
    constexpr char32_t capitalIWithDot = 0x130;
    return code == capitalIWithDot ? code : g_unichar_tolower(code);
}
} // namespace

char32_t FoldedBeyondAscii(std::string_view text, std::size_t& length) {
    const auto first = static_cast<unsigned char>(text.front());
    length = 1;
    const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2))
        return strayByteBase + first;
    length = static_cast<std::size_t>(g_utf8_skip[first]);
    return Folded(text.substr(0, length), code);
}

} // namespace kqu

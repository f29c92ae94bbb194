#include "framework/values/Encodings.h"

#include <glib.h>

namespace kqu {

std::u16string ToUtf16(std::string_view text) {
    constexpr char32_t replacement = 0xFFFD;
    constexpr char32_t firstSupplementary = 0x10000;
    std::u16string result;
    while (!text.empty()) {
        gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        auto length =
            static_cast<std::size_t>(g_utf8_skip[static_cast<unsigned char>(text.front())]);
        if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2)) {
            code = replacement;
            length = 1;
        }
        if (code >= firstSupplementary) {
            code -= firstSupplementary;
            result += static_cast<char16_t>(0xD800U + (code >> 10U));
            result += static_cast<char16_t>(0xDC00U + (code & 0x3FFU));
        } else {
            result += static_cast<char16_t>(code);
        }
        text.remove_prefix(length);
    }
    return result;
}

} // namespace kqu

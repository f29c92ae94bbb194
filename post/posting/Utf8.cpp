#include "post/posting/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace kqu::post {

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        const std::size_t length = first < 0x80   ? 1
                                   : first < 0xC2 ? 0
                                   : first < 0xE0 ? 2
                                   : first < 0xF0 ? 3
                                   : first < 0xF5 ? 4
                                                  : 0;
        if (length == 0 || text.size() < length)
            return false;
        std::uint32_t code = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xC0U) != 0x80U)
                return false;
            code = code << 6U | (next & 0x3FU);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace kqu::post

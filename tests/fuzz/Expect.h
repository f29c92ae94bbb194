#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kqu::fuzz {

/// What must hold whatever the input was. If it doesn't, the run ends and the input is kept.
inline void Expect(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

[[nodiscard]] inline bool IsAscii(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

[[nodiscard]] inline char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

[[nodiscard]] inline std::string LowerAscii(std::string text) {
    for (char& c : text)
        c = LowerAscii(c);
    return text;
}

} // namespace kqu::fuzz

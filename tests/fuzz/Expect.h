#pragma once

#include <cstdio>
#include <cstdlib>

namespace kqu::fuzz {

/// What must hold whatever the input was. If it doesn't, the run ends and the input is kept.
inline void Expect(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

} // namespace kqu::fuzz

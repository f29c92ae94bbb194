#pragma once

#include "platform/interfaces/NativeWindow.h"

namespace kqu::platform {

// For changing from one origin to another.

[[nodiscard]] constexpr Point operator+(Point a, Point b) {
    return {a.x + b.x, a.y + b.y};
}

[[nodiscard]] constexpr Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}

} // namespace kqu::platform

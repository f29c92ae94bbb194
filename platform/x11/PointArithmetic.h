#pragma once

#include "platform/interfaces/NativeWindow.h"

namespace kqu::platform {

// For changing from one origin to another, and from device pixels to logical ones.

[[nodiscard]] constexpr Point operator+(Point a, Point b) {
    return {a.x + b.x, a.y + b.y};
}

[[nodiscard]] constexpr Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}

[[nodiscard]] constexpr Point operator*(Point a, int scale) {
    return {a.x * scale, a.y * scale};
}

[[nodiscard]] constexpr Size operator*(Size a, int scale) {
    return {a.width * scale, a.height * scale};
}

/// Rounds down, also below 0.
[[nodiscard]] constexpr Point operator/(Point a, int scale) {
    const auto floor = [scale](int value) { return (value - (value < 0 ? scale - 1 : 0)) / scale; };
    return {floor(a.x), floor(a.y)};
}

} // namespace kqu::platform

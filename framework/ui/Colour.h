#pragma once

#include <algorithm>
#include <cstdint>

namespace kqu {

/// A 24-bit colour, 0xRRGGBB.
struct Colour {
    std::uint32_t value = 0;

    [[nodiscard]] constexpr int Red() const { return static_cast<int>(value >> 16U & 0xFFU); }
    [[nodiscard]] constexpr int Green() const { return static_cast<int>(value >> 8U & 0xFFU); }
    [[nodiscard]] constexpr int Blue() const { return static_cast<int>(value & 0xFFU); }

    bool operator==(const Colour&) const = default;
};

/// The colour of these parts, 0 to 255 each; a part outside is brought in.
[[nodiscard]] constexpr Colour RGB(int red, int green, int blue) {
    const auto part = [](int value) {
        return static_cast<std::uint32_t>(std::clamp(value, 0, 255));
    };
    return {part(red) << 16U | part(green) << 8U | part(blue)};
}

} // namespace kqu

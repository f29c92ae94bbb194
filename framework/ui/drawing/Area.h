#pragma once

#include <algorithm>
#include <cstdint>

namespace kqu::drawing {

/// Distances in pixels while they are computed with: no sum of coordinates overflows.
using Pixels = std::int64_t;

/// A rectangle of pixels from its left and top up to, but without, its right and bottom.
struct Area {
    Pixels left = 0;
    Pixels top = 0;
    Pixels right = 0;
    Pixels bottom = 0;

    [[nodiscard]] static Area Of(Pixels x, Pixels y, Pixels width, Pixels height) {
        return {x, y, x + width, y + height};
    }

    [[nodiscard]] Pixels Width() const { return right - left; }
    [[nodiscard]] Pixels Height() const { return bottom - top; }
    [[nodiscard]] bool IsEmpty() const { return left >= right || top >= bottom; }
    [[nodiscard]] bool Covers(const Area& other) const {
        return left <= other.left && top <= other.top && right >= other.right &&
               bottom >= other.bottom;
    }
    [[nodiscard]] Area Within(const Area& other) const {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    [[nodiscard]] Area Moved(Pixels x, Pixels y) const {
        return {left + x, top + y, right + x, bottom + y};
    }

    /// In pixels that are so many times smaller.
    [[nodiscard]] Area Times(Pixels scale) const {
        return {left * scale, top * scale, right * scale, bottom * scale};
    }

    bool operator==(const Area&) const = default;
};

} // namespace kqu::drawing

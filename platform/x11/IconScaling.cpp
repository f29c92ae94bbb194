#include "platform/x11/IconScaling.h"

#include <algorithm>
#include <cstddef>

namespace kqu::platform {

namespace {
constexpr std::uint32_t opaque = 0xFF000000;

/// From the first up to and without the last; at least one.
struct Stretch {
    int first;
    int last;
};

/// What of `full` pixels lies under pixel `index` when they are scaled to `scaled`.
Stretch Under(int index, int scaled, int full) {
    const int first = index * full / scaled;
    return {first, std::max(first + 1, (index + 1) * full / scaled)};
}

std::uint32_t Mean(const Frame& frame, Stretch columns, Stretch lines) {
    std::uint64_t red = 0;
    std::uint64_t green = 0;
    std::uint64_t blue = 0;
    for (int y = lines.first; y < lines.last; ++y)
        for (int x = columns.first; x < columns.last; ++x) {
            const std::uint32_t pixel =
                frame.pixels[static_cast<std::ptrdiff_t>(y) * frame.stride + x];
            red += (pixel >> 16) & 0xFF;
            green += (pixel >> 8) & 0xFF;
            blue += pixel & 0xFF;
        }
    const auto count = static_cast<std::uint64_t>(columns.last - columns.first) *
                       static_cast<std::uint64_t>(lines.last - lines.first);
    const auto mean = [&](std::uint64_t sum) {
        return static_cast<std::uint32_t>((sum + count / 2) / count);
    };
    return opaque | mean(red) << 16 | mean(green) << 8 | mean(blue);
}

/// The frame's size when it is made to fit.
Size Fitted(const Frame& frame, int side) {
    const int longest = std::max({frame.width, frame.height, side});
    return {std::max(1, frame.width * side / longest), std::max(1, frame.height * side / longest)};
}
} // namespace

std::vector<std::uint32_t> ScaledIcon(const Frame& frame, int side) {
    const auto length = static_cast<std::size_t>(side);
    std::vector<std::uint32_t> icon(2 + length * length);
    icon[0] = icon[1] = static_cast<std::uint32_t>(side);
    if (frame.width <= 0 || frame.height <= 0)
        return icon;
    const Size size = Fitted(frame, side);
    const int left = (side - size.width) / 2;
    const int top = (side - size.height) / 2;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            icon[2 + static_cast<std::size_t>(top + y) * length +
                 static_cast<std::size_t>(left + x)] =
                Mean(frame, Under(x, size.width, frame.width), Under(y, size.height, frame.height));
    return icon;
}

} // namespace kqu::platform

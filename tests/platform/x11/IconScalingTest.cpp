#include "platform/x11/IconScaling.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using kqu::platform::Frame;
using kqu::platform::ScaledIcon;

TEST(IconScalingTest, PixelsAreMeansAndTheFrameStandsInTheMiddle) {
    // 8 x 4 pixels, lines of 10: columns of white and black in turn, red in the lower half.
    std::vector<std::uint32_t> pixels(40, 0xABCDEF);
    for (std::size_t y = 0; y < 4; ++y)
        for (std::size_t x = 0; x < 8; ++x)
            pixels[y * 10 + x] = y >= 2 ? 0xFF0000 : (x % 2 == 0 ? 0xFFFFFF : 0);
    const auto icon = ScaledIcon({pixels.data(), 8, 4, 10}, 4);
    const std::vector<std::uint32_t> expected{
        4,          4,          0,          0,          0,          0,
        0xFF808080, 0xFF808080, 0xFF808080, 0xFF808080, 0xFFFF0000, 0xFFFF0000,
        0xFFFF0000, 0xFFFF0000, 0,          0,          0,          0};
    EXPECT_EQ(icon, expected);
}

TEST(IconScalingTest, AnySizeFits) {
    for (const int width : {0, 1, 31, 47, 48, 49, 340, 500})
        for (const int height : {1, 48, 73, 730}) {
            const std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width * height), 7);
            const auto icon = ScaledIcon({pixels.data(), width, height, width}, 48);
            ASSERT_EQ(icon.size(), 2U + 48 * 48);
            const auto opaque = std::count(icon.begin() + 2, icon.end(), 0xFF000007U);
            EXPECT_EQ(opaque > 0, width > 0);
            // Never larger than the frame itself.
            EXPECT_LE(opaque, std::max(width * height, 0));
        }
}

} // namespace

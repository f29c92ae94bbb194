#include "platform/x11/IconScaling.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using kqu::platform::ScaledIcon;
using Pixels = std::vector<std::uint32_t>;

TEST(IconScalingTest, PixelsAreMeansAndTheFrameStandsInTheMiddle) {
    // 96 x 48 pixels, lines of 97: columns of white and black in turn, red in the lower half.
    Pixels pixels(97 * 48, 0xFF0000);
    for (std::size_t i = 0; i < pixels.size() / 2; ++i)
        pixels[i] = i % 97 % 2 == 0 ? 0xFFFFFF : 0;
    const Pixels halved = ScaledIcon({pixels.data(), 96, 48, 97}, 48);
    const auto at = [&](std::size_t x, std::size_t y) { return halved[2 + y * 48 + x]; };
    EXPECT_EQ(at(24, 11), 0U);
    EXPECT_EQ(at(0, 35), 0xFFFF0000U);
    EXPECT_EQ(at(24, 36), 0U);
    EXPECT_NEAR(at(24, 16) & 0xFF, 0x80, 0x20);
    // Any size fits, and none is enlarged.
    for (const int width : {0, 1, 31, 47, 48, 49, 340, 500})
        for (const int height : {1, 48, 73, 730}) {
            const Pixels sevens(static_cast<std::size_t>(width * height), 7);
            const auto icon = ScaledIcon({sevens.data(), width, height, width}, 48);
            ASSERT_EQ(icon.size(), 2U + 48 * 48);
            const auto opaque = std::count(icon.begin() + 2, icon.end(), 0xFF000007U);
            EXPECT_EQ(opaque > 0, width > 0);
            EXPECT_LE(opaque, width * height);
        }
}

} // namespace

#include "platform/x11/IconScaling.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using kqu::platform::ScaledIcon;
using Pixels = std::vector<std::uint32_t>;

TEST(IconScalingTest, PixelsAreMeansAndTheFrameStandsInTheMiddle) {
    // 4 x 2 pixels, lines of 5: columns of white and black in turn, red in the lower half.
    const Pixels pixels{0xFFFFFF, 0, 0xFFFFFF, 0, 7, 0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000, 7};
    EXPECT_EQ(ScaledIcon({pixels.data(), 4, 2, 5}, 2),
              (Pixels{2, 2, 0xFFBF4040, 0xFFBF4040, 0, 0}));
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

#include "panel/Pictures.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;

constexpr int height = 6;

// What the sprite's parts look like where the columns need not be told apart.
constexpr Colour unread = RGB(255, 0, 0);
constexpr Colour fill = RGB(0, 0, 250);
constexpr Colour track = RGB(0, 250, 0);
constexpr Colour tick = RGB(40, 40, 40);

Colour PartOf(int column) {
    if (column < 15)
        return unread;
    return column < 30 ? fill : column < 45 ? track : tick;
}

class ProgressBarTest : public testing::Test {
  protected:
    void SetUp() override {
        SetSprite([](int x, int) { return PartOf(x); }, [](int, int) { return Grey(0); });
        machine.Start();
    }

    void SetSprite(const PixelOf& colours, const PixelOf& mask) {
        artwork.Set(171, 47, height, colours);
        artwork.Set(172, 47, height, mask);
        DropPictures();
    }

    MyEventList& List() { return *machine.Panel().MyWindowEventList; }

    Ref<Picture> Bar(std::int32_t width, double value) {
        const auto record = std::make_shared<Dictionary>();
        List().ListProgress(width, value, 100.0, *record);
        return record->Value("progresspict").ObjectAs<Picture>();
    }

    static Colour At(const Ref<Picture>& bar, int x, int y = 0) {
        return bar->Graphics().Pixel(x, y);
    }
    static int MaskAt(const Ref<Picture>& bar, int x, int y = 0) {
        return bar->Mask(MaskCreation::IfThere)->Graphics().Pixel(x, y).Red();
    }

    Artwork artwork;
    SimulatedMachine machine;
};

TEST_F(ProgressBarTest, SlicesComeFromTheirColumns) {
    // Every column has its own red value, every line its own blue; ticks do not show.
    SetSprite([](int x, int y) { return RGB(5 * x, 0, y); },
              [](int x, int y) { return x < 45 ? Grey(y) : Grey(255); });
    const auto expectStrip = [](const Ref<Picture>& bar, int width, int first) {
        for (int x = 0; x < width; ++x)
            for (int y = 0; y < height; ++y) {
                const bool isMiddle = x >= 5 && x < width - 5;
                double column = x < width - 5 ? first + x : first + 15 + x - width;
                if (isMiddle)
                    column = first + 5 + (x + 0.5) * 5 / width - 0.5;
                ASSERT_NEAR(At(bar, x, y).Red(), 5 * column, isMiddle ? 3 : 0) << x;
                ASSERT_EQ(At(bar, x, y).Blue(), y);
                ASSERT_EQ(MaskAt(bar, x, y), y);
            }
    };
    // What is blended with the white of the bar is thinned, so the strips themselves are compared.
    for (const int width : {262, 100, 17, 10, 8, 5}) {
        Bar(width, 100.0);
        EXPECT_EQ(List().WhitePict->Height(), height + 1);
        EXPECT_EQ(List().BluePict->Height(), height);
        expectStrip(List().WhitePict, width, 30);
        expectStrip(List().BluePict, width, 15);
        EXPECT_EQ(MaskAt(List().WhitePict, 0, height), 255);
    }
}

TEST_F(ProgressBarTest, TheFillIsSqueezedWithItsCaps) {
    SetSprite([](int x, int) { return x >= 25 && x < 30 ? RGB(0, 0, 100) : PartOf(x); },
              [](int x, int) {
                  return x >= 25 && x < 30 ? Grey(64) : x < 45 ? Grey(0) : Grey(255);
              });
    // The right cap, a fiftieth of the strip, stands at the end of the fill and thins it out.
    Ref<Picture> bar = Bar(250, 10.0);
    EXPECT_EQ(At(bar, 23), fill);
    EXPECT_LT(At(bar, 24).Blue(), 250);
    EXPECT_GT(MaskAt(bar, 24), 0);
    EXPECT_EQ(At(bar, 25), track);
    bar = Bar(250, 100.0);
    EXPECT_EQ(At(bar, 244), fill);
    // Blended through its mask onto the track, and the mask replaced by its own.
    EXPECT_EQ(At(bar, 245), RGB(0, 63, 75));
    EXPECT_EQ(MaskAt(bar, 245), 64);
    // Beyond the whole it is stretched out of the picture, not stopped.
    bar = Bar(250, 150.0);
    EXPECT_EQ(At(bar, 249), fill);
    EXPECT_EQ(MaskAt(bar, 249), 0);
}

} // namespace
} // namespace kqu

#include "framework/values/Exceptions.h"
#include "panel/Pictures.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

constexpr int height = 6;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

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

    Ref<Picture> Bar(std::int32_t width, double value, double maximum = 100.0) {
        const auto record = std::make_shared<Dictionary>();
        List().ListProgress(width, value, maximum, *record);
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

TEST_F(ProgressBarTest, TrackFillAndTicksFollowTheirOwnTests) {
    // A tick is half of its own red over what is below.
    SetSprite([](int x, int) { return x < 45 ? PartOf(x) : unread; },
              [](int x, int) { return x < 45 ? Grey(0) : Grey(128); });
    const auto expect = [this](std::int32_t width, double value, int filled, bool hasTrack = true,
                               bool hasTicks = true, double maximum = 100) {
        SCOPED_TRACE(testing::Message() << value << " of " << maximum << " at " << width);
        const Ref<Picture> bar = Bar(width, value, maximum);
        int found[3] = {0, 0, 0};
        for (int x = 0; x < width; ++x) {
            EXPECT_EQ(MaskAt(bar, x, height - 1), hasTrack ? 0 : 255);
            const Colour colour = At(bar, x, height - 1);
            found[0] += colour.Red() > 100 && colour != RGB(255, 255, 255);
            found[1] += colour.Blue() > 100 && colour != RGB(255, 255, 255);
            found[2] += colour.Green() > 100 && colour != RGB(255, 255, 255);
        }
        EXPECT_EQ(found[0] > 0, hasTicks);
        EXPECT_EQ(found[1], filled);
        EXPECT_EQ(found[2], hasTrack ? width - filled : 0);
    };
    expect(262, -1.0, 0, false, false);
    for (const double below : {-2.0, -infinity, notANumber})
        expect(262, below, 0, true, false);
    for (const double none : {-0.5, 0.0, 0.1, 5e-324})
        expect(262, none, 0);
    expect(262, 45.6, 0, true, true, 0);
    for (const double full : {100.0, 150.0, 1e300, infinity})
        expect(262, full, 262);
    using Case = std::tuple<std::int32_t, double, int>;
    for (const auto& [width, value, filled] :
         {Case{262, 45.6, 119}, Case{262, 33.3, 87}, Case{262, 99.9, 261}, Case{250, 11.2, 28},
          Case{340, 35, 119}, Case{300, 41, 123}})
        expect(width, value, filled);
    EXPECT_THROW(Bar(0, 50), RuntimeException);
    EXPECT_THROW(Bar(-5, -1), RuntimeException);
}

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

TEST_F(ProgressBarTest, TranslucentPixelsAreThinnedTwice) {
    using Case = std::array<int, 3>;
    for (const auto& [mask, onWhite, onTint] :
         {Case{0, 0, 0}, Case{64, 112, 108}, Case{128, 192, 185}, Case{200, 243, 232},
          Case{255, 255, 241}}) {
        const int grey = mask;
        SetSprite([](int, int) { return RGB(0, 0, 0); },
                  [grey](int x, int) { return x < 45 ? Grey(grey) : Grey(0); });
        List().WhitePict = nullptr;
        const Ref<Picture> bar = Bar(100, -2.0);
        for (const auto& [stripe, expected] : {std::pair{255, onWhite}, {241, onTint}}) {
            const Ref<Picture> row = NewPicture(100, height, 32);
            row->Graphics().SetForeColor(Grey(stripe));
            row->Graphics().FillRect(0, 0, 100, height);
            row->Graphics().DrawPicture(*bar, 0, 0);
            EXPECT_NEAR(row->Graphics().Pixel(50, 3).Red(), expected, 1) << mask;
        }
        // Ticks change colours only.
        EXPECT_EQ(MaskAt(Bar(100, 0.0), 50), mask);
    }
}

TEST_F(ProgressBarTest, StripsAreKeptForOneWidth) {
    Bar(262, 0.0);
    EXPECT_EQ(List().BluePict, nullptr);
    const Ref<Picture> first = List().WhitePict;
    Bar(262, 50.0);
    EXPECT_EQ(List().WhitePict, first);
    const Ref<Picture> full = List().BluePict;
    Bar(251, 0.0);
    EXPECT_EQ(List().WhitePict->Width(), 251);
    Bar(262, 12.0);
    EXPECT_NE(List().WhitePict, first);
    EXPECT_EQ(List().BluePict, full);
    // Every call makes a picture of its own.
    const Ref<Picture> one = Bar(262, 10.0);
    EXPECT_EQ(At(Bar(262, 90.0), 130), fill);
    EXPECT_EQ(At(one, 130), track);
}

} // namespace
} // namespace kqu

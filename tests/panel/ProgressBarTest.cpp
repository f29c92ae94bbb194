#include "framework/values/Exceptions.h"
#include "panel/Pictures.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>
#include <limits>

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
    static std::vector<int> ColumnsOf(const Ref<Picture>& bar, Colour colour) {
        std::vector<int> columns;
        for (int x = 0; x < bar->Width(); ++x)
            if (At(bar, x) == colour)
                columns.push_back(x);
        return columns;
    }

    Artwork artwork;
    SimulatedMachine machine;
};

TEST_F(ProgressBarTest, TheSeparatorIsMadeWhenTheListOpens) {
    EXPECT_EQ(List().MyDict->Count(), 0);
    EXPECT_EQ(At(List().MySep, 0), RGB(0, 0, 0));
    EXPECT_EQ(MaskAt(List().MySep, 0), 200);
    EXPECT_EQ(List().MySep->Width() * List().MySep->Height(), 1);
    EXPECT_EQ(List().ProgressSep, nullptr);
}

TEST_F(ProgressBarTest, TicksStandAtRunningSumsForEveryWidth) {
    for (std::int32_t width = 1; width <= 480; ++width) {
        const Ref<Picture> bar = Bar(width, 0.0);
        std::vector<bool> isTick(static_cast<std::size_t>(width) + 2);
        double place = 0.0;
        double walked = 0.0;
        while (width >= walked) {
            place += width / 10.0;
            walked += width / 10.0;
            const auto column = static_cast<std::size_t>(place);
            if (column < static_cast<std::size_t>(width))
                isTick[column] = isTick[column + 1] = true;
        }
        for (int x = 0; x < width; ++x)
            ASSERT_EQ(At(bar, x) == tick, isTick[static_cast<std::size_t>(x)])
                << width << " at " << x;
    }
    struct Case {
        std::int32_t width;
        std::vector<int> columns;
    };
    for (const auto& [width, columns] : {Case{320, {32, 64, 96, 128, 160, 192, 224, 256, 288}},
                                         {278, {27, 55, 83, 111, 139, 166, 194, 222, 250}},
                                         {267, {26, 53, 80, 106, 133, 160, 186, 213, 240, 266}},
                                         {262, {26, 52, 78, 104, 131, 157, 183, 209, 235, 261}},
                                         {251, {25, 50, 75, 100, 125, 150, 175, 200, 225, 250}},
                                         {246, {24, 49, 73, 98, 123, 147, 172, 196, 221, 245}},
                                         {235, {23, 47, 70, 94, 117, 141, 164, 188, 211}}}) {
        std::vector<int> expected;
        for (const int column : columns) {
            expected.push_back(column);
            if (column + 1 < width)
                expected.push_back(column + 1);
        }
        EXPECT_EQ(ColumnsOf(Bar(width, 45.6), tick), expected) << width;
    }
}

TEST_F(ProgressBarTest, TrackFillAndTicksFollowTheirOwnTests) {
    struct Case {
        std::int32_t width;
        double value;
        double maximum;
        bool hasTrack;
        int filled;
        bool hasTicks;
    };
    // Fill columns are counted on a sprite without ticks of its own colour.
    SetSprite([](int x, int) { return x < 45 ? PartOf(x) : unread; },
              [](int x, int) { return x < 45 ? Grey(0) : Grey(128); });
    DropPictures();
    for (const Case& c : {Case{262, -1.0, 100, false, 0, false},
                          {262, -2.0, 100, true, 0, false},
                          {262, -infinity, 100, true, 0, false},
                          {262, notANumber, 100, true, 0, false},
                          {262, -0.5, 100, true, 0, true},
                          {262, 0.0, 100, true, 0, true},
                          {262, 0.1, 100, true, 0, true},
                          {262, 5e-324, 100, true, 0, true},
                          {262, 45.6, 0, true, 0, true},
                          {262, 45.6, 100, true, 119, true},
                          {262, 33.3, 100, true, 87, true},
                          {262, 99.9, 100, true, 261, true},
                          {262, 100, 100, true, 262, true},
                          {262, 150, 100, true, 262, true},
                          {262, 1e300, 100, true, 262, true},
                          {262, infinity, 100, true, 262, true},
                          {250, 11.2, 100, true, 28, true},
                          {340, 35, 100, true, 119, true},
                          {300, 41, 100, true, 123, true}}) {
        SCOPED_TRACE(testing::Message() << c.value << " of " << c.maximum << " at " << c.width);
        const Ref<Picture> bar = Bar(c.width, c.value, c.maximum);
        ASSERT_NE(bar, nullptr);
        EXPECT_EQ(bar->Width(), c.width);
        EXPECT_EQ(bar->Height(), height);
        int tracked = 0;
        int filled = 0;
        int ticked = 0;
        for (int x = 0; x < c.width; ++x) {
            EXPECT_EQ(MaskAt(bar, x, height - 1), c.hasTrack ? 0 : 255);
            const Colour colour = At(bar, x, height - 1);
            // A tick is half of its own red over what is below.
            ticked += colour.Red() > 100 && colour != RGB(255, 255, 255);
            filled += colour.Blue() > 100 && colour != RGB(255, 255, 255);
            tracked += colour.Green() > 100 && colour != RGB(255, 255, 255);
        }
        EXPECT_EQ(filled, c.filled);
        EXPECT_EQ(tracked, c.hasTrack ? c.width - c.filled : 0);
        EXPECT_EQ(ticked > 0, c.hasTicks);
    }
    EXPECT_THROW(Bar(0, 50), RuntimeException);
    EXPECT_THROW(Bar(-5, -1), RuntimeException);
}

TEST_F(ProgressBarTest, SlicesComeFromTheirColumns) {
    // Every column has its own red value, every line its own blue; ticks do not show.
    SetSprite([](int x, int y) { return RGB(5 * x, 0, y); },
              [](int x, int y) { return x < 45 ? Grey(y) : Grey(255); });
    DropPictures();
    const auto expectStrip = [](const Ref<Picture>& bar, int width, int firstColumn) {
        for (int x = 0; x < width; ++x)
            for (int y = 0; y < height; ++y) {
                double column = firstColumn + 5 + (x + 0.5) * 5 / width - 0.5;
                if (x < 5)
                    column = firstColumn + x;
                if (x >= width - 5)
                    column = firstColumn + 10 + x - (width - 5);
                ASSERT_NEAR(At(bar, x, y).Red(), 5 * column, x < 5 || x >= width - 5 ? 0 : 3) << x;
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
    DropPictures();
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
    struct Case {
        int mask, onWhite, onTint;
    };
    for (const auto& [mask, onWhite, onTint] :
         {Case{0, 0, 0}, {64, 112, 108}, {128, 192, 185}, {200, 243, 232}, {255, 255, 241}}) {
        const int grey = mask;
        SetSprite([](int, int) { return RGB(0, 0, 0); },
                  [grey](int x, int) { return x < 45 ? Grey(grey) : Grey(0); });
        DropPictures();
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
    const Ref<Picture> first = List().WhitePict;
    const Ref<Picture> ticks = List().ProgressSep;
    EXPECT_EQ(List().BluePict, nullptr);
    Bar(262, -2.0);
    EXPECT_EQ(List().WhitePict, first);
    EXPECT_EQ(List().BluePict, nullptr);
    Bar(262, 50.0);
    const Ref<Picture> full = List().BluePict;
    ASSERT_NE(full, nullptr);
    Bar(251, 0.0);
    EXPECT_NE(List().WhitePict, first);
    EXPECT_EQ(List().WhitePict->Width(), 251);
    EXPECT_EQ(List().BluePict, full);
    Bar(262, 12.0);
    EXPECT_NE(List().WhitePict, first);
    EXPECT_EQ(List().BluePict, full);
    EXPECT_EQ(List().ProgressSep, ticks);
    // Every call makes a picture of its own.
    const Ref<Picture> one = Bar(262, 10.0);
    const Ref<Picture> other = Bar(262, 90.0);
    EXPECT_EQ(At(one, 130), track);
    EXPECT_EQ(At(other, 130), fill);
}

TEST_F(ProgressBarTest, WithoutItsSpriteThereIsNoBar) {
    for (const int id : {171, 172}) {
        Artwork missing;
        missing.Remove(id);
        List().WhitePict = List().BluePict = List().ProgressSep = nullptr;
        EXPECT_THROW(Bar(262, 50.0), NilObjectException);
    }
}

} // namespace
} // namespace kqu

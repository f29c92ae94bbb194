#include "framework/ui/Picture.h"

#include "framework/values/Exceptions.h"
#include "tests/support/Artwork.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace kqu {
namespace {

using simulation::Grey;

constexpr int most = std::numeric_limits<int>::max();
constexpr int least = std::numeric_limits<int>::min();
constexpr Colour white = RGB(255, 255, 255);
constexpr Colour black = RGB(0, 0, 0);

/// A picture flat in one colour, with a flat mask unless that is negative.
Ref<Picture> Flat(int width, int height, Colour colour, int mask = -1) {
    const Ref<Picture> picture = NewPicture(width, height, 32);
    picture->Graphics().SetForeColor(colour);
    picture->Graphics().FillRect(0, 0, width, height);
    if (mask >= 0) {
        Graphics& grey = picture->Mask(MaskCreation::MakeIfMissing)->Graphics();
        grey.SetForeColor(Grey(mask));
        grey.FillRect(0, 0, width, height);
    }
    return picture;
}

/// A picture whose column x has the colour (x, 2x, 255 - x).
Ref<Picture> Columns(int width, int height) {
    const Ref<Picture> picture = NewPicture(width, height, 32);
    for (int x = 0; x < width; ++x) {
        picture->Graphics().SetForeColor(RGB(x, 2 * x, 255 - x));
        picture->Graphics().FillRect(x, 0, 1, height);
    }
    return picture;
}

/// What two drawings look like on pixels that are there from the start, and on recorded ones.
std::vector<Ref<Picture>> Canvases(int width, int height) {
    return {Picture::MakeBuffer(width, height), NewPicture(width, height, 32)};
}

TEST(Picture, IsWhiteAndItsMaskHidesEverything) {
    const Ref<Picture> picture = NewPicture(3, 2, 32);
    EXPECT_EQ(picture->Graphics().Pixel(2, 1), white);
    EXPECT_EQ(picture->Mask(MaskCreation::IfThere), nullptr);
    const Ref<Picture> mask = picture->Mask(MaskCreation::MakeIfMissing);
    EXPECT_EQ(mask->Width(), 3);
    EXPECT_EQ(mask->Height(), 2);
    EXPECT_EQ(mask->Graphics().Pixel(0, 0), white);
    EXPECT_EQ(picture->Mask(MaskCreation::IfThere), mask);
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {-3, 5}, {0, 0}, {least, most}})
        EXPECT_THROW(static_cast<void>(NewPicture(width, height, 32)), RuntimeException);
}

TEST(Picture, BlendsThroughItsMaskToTheNearestValue) {
    struct Case {
        int mask, once, twice, onTint;
    };
    // Black ink: drawn once on white, a second time through a bar's own mask, and once on a tint.
    for (const auto& [mask, once, twice, onTint] : {Case{0, 0, 0, 0},
                                                    {64, 64, 112, 60},
                                                    {128, 128, 192, 121},
                                                    {200, 200, 243, 189},
                                                    {255, 255, 255, 241}}) {
        const Ref<Picture> ink = Flat(4, 4, black, mask);
        for (const Ref<Picture>& bar : Canvases(4, 4)) {
            bar->Graphics().DrawPicture(*ink, 0, 0);
            EXPECT_EQ(bar->Graphics().Pixel(1, 1), Grey(once));
            bar->Mask(MaskCreation::MakeIfMissing)
                ->Graphics()
                .DrawPicture(*ink->Mask(MaskCreation::IfThere), 0, 0);
            for (const Ref<Picture>& row : Canvases(4, 4)) {
                row->Graphics().DrawPicture(*bar, 0, 0);
                EXPECT_EQ(row->Graphics().Pixel(3, 3), Grey(twice)) << mask;
            }
        }
        const Ref<Picture> tint = Flat(4, 4, RGB(241, 245, 250));
        tint->Graphics().DrawPicture(*ink, 0, 0);
        EXPECT_EQ(tint->Graphics().Pixel(0, 0).Red(), onTint);
    }
    for (int mask = 0; mask < 256; ++mask) {
        const Ref<Picture> below = Flat(1, 1, RGB(241, 13, 200));
        below->Graphics().DrawPicture(*Flat(1, 1, RGB(101, 255, 3), mask), 0, 0);
        const auto mixed = [mask](int source, int under) {
            return (2 * (source * (255 - mask) + under * mask) + 255) / 510;
        };
        EXPECT_EQ(below->Graphics().Pixel(0, 0),
                  RGB(mixed(101, 241), mixed(255, 13), mixed(3, 200)));
    }
}

TEST(Picture, DrawingNeverTouchesTheMask) {
    const Ref<Picture> picture = Flat(10, 4, white, 255);
    picture->Graphics().DrawPicture(*Flat(10, 4, black, 100), 0, 0);
    picture->Graphics().SetPixel(0, 0, black);
    picture->Graphics().DrawString("x", 0, 4);
    for (int x = 0; x < 10; ++x)
        EXPECT_EQ(picture->Mask(MaskCreation::IfThere)->Graphics().Pixel(x, 1), white);
    // A mask has no mask, so one that is drawn on another replaces it.
    const Ref<Picture> other = Flat(4, 4, black, 30);
    const Ref<Picture> mask = picture->Mask(MaskCreation::IfThere);
    mask->Graphics().DrawPicture(*other->Mask(MaskCreation::IfThere), 5, 0);
    EXPECT_EQ(mask->Graphics().Pixel(4, 0), white);
    EXPECT_EQ(mask->Graphics().Pixel(5, 0), Grey(30));
    EXPECT_EQ(mask->Graphics().Pixel(9, 3), white);
}

TEST(Picture, NegativePlacesSampleColumns) {
    const Ref<Picture> sprite = Columns(47, 6);
    const Ref<Picture> slice = NewPicture(5, 6, 32);
    for (const int first : {15, 20, 25, 30, 35, 40, 42}) {
        slice->Graphics().DrawPicture(*sprite, -first, 0);
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(slice->Graphics().Pixel(x, 5),
                      RGB(first + x, 2 * (first + x), 255 - first - x));
    }
    slice->Graphics().DrawPicture(*sprite, -45, 0);
    EXPECT_EQ(slice->Graphics().Pixel(1, 0).Red(), 46);
    // Nothing is drawn past the end: the sample before stays.
    EXPECT_EQ(slice->Graphics().Pixel(2, 0).Red(), 44);
}

TEST(Picture, StretchesWithoutFadingOrBleeding) {
    // One pixel through a flat mask, drawn out to a line.
    const Ref<Picture> separator = Flat(1, 1, black, 200);
    for (const Ref<Picture>& row : Canvases(340, 3)) {
        row->Graphics().DrawPicture(*separator, 2, 1, 341, 1, 0, 0, 1, 1);
        for (int x = 2; x < 340; ++x)
            ASSERT_EQ(row->Graphics().Pixel(x, 1), Grey(200)) << x;
        EXPECT_EQ(row->Graphics().Pixel(1, 1), white);
        EXPECT_EQ(row->Graphics().Pixel(2, 0), white);
        EXPECT_EQ(row->Graphics().Pixel(2, 2), white);
    }
    // A part of a picture knows nothing of its neighbours.
    const Ref<Picture> sprite = Columns(47, 6);
    const Ref<Picture> strip = NewPicture(200, 12, 32);
    strip->Graphics().DrawPicture(*sprite, 0, 0, 200, 12, 35, 0, 1, 6);
    for (int x = 0; x < 200; ++x)
        ASSERT_EQ(strip->Graphics().Pixel(x, x % 12), RGB(35, 70, 220)) << x;
}

TEST(Picture, SqueezesToTheAverageOfWhatIsCovered) {
    const Ref<Picture> halves = Flat(200, 2, black);
    halves->Graphics().SetForeColor(white);
    halves->Graphics().FillRect(100, 0, 100, 2);
    struct Case {
        int width;
        std::vector<int> greys;
    };
    for (const auto& [width, greys] :
         {Case{2, {0, 255}}, {1, {128}}, {3, {0, 128, 255}}, {4, {0, 0, 255, 255}}}) {
        const Ref<Picture> result = NewPicture(10, 2, 32);
        result->Graphics().DrawPicture(*halves, 1, 0, width, 1);
        for (std::size_t x = 0; x < greys.size(); ++x)
            EXPECT_EQ(result->Graphics().Pixel(1 + static_cast<int>(x), 0), Grey(greys[x]));
        EXPECT_EQ(result->Graphics().Pixel(1 + width, 0), white);
    }
    // Far beyond the target only the first column is in sight.
    const Ref<Picture> wide = NewPicture(262, 6, 32);
    wide->Graphics().DrawPicture(*Columns(47, 6), 0, 0, most, 6);
    for (const int x : {0, 1, 130, 261})
        EXPECT_EQ(wide->Graphics().Pixel(x, 3), RGB(0, 0, 255));
}

TEST(Picture, OddPlacesAndSizesDrawNothingOrWhatIsInSight) {
    const Ref<Picture> ink = Flat(5, 5, black, 0);
    const int odd[] = {least, -1000000000, -10001, -9999, -1, 0, 1, 1000000000, most};
    for (const Ref<Picture>& target : Canvases(20, 20)) {
        Graphics& g = target->Graphics();
        for (const int a : odd)
            for (const int b : odd) {
                g.FillRect(a, b, 0, 10);
                g.FillRect(a, b, -5, 10);
                g.DrawPicture(*ink, a, b, 0, 0);
                g.DrawPicture(*ink, 0, 0, 5, std::min(a, 0), 0, 0, 5, 5);
                g.DrawPicture(*ink, 0, 0, 5, 5, a, b, 0, 3);
                g.DrawPicture(*ink, 0, 0, 5, 5, 5, 0);
                g.DrawPicture(*ink, 0, 0, 5, 5, -5, 0, 5, 5);
                g.SetPixel(std::min(a, -1), b, black);
                g.DrawString("x", a >= -1 && a <= 1 ? most : a, b);
                EXPECT_EQ(g.Pixel(std::min(a, -1), b), white);
            }
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(g.Pixel(i, i), white);
        // Half of this source lies outside; so does half of the destination.
        g.DrawPicture(*ink, 0, 0, 10, 10, -5, 0, 10, 5);
        EXPECT_EQ(g.Pixel(4, 2), white);
        EXPECT_EQ(g.Pixel(5, 2), black);
        g.FillRect(-1000000000, -1000000000, most, most);
        EXPECT_EQ(g.Pixel(19, 19), black);
    }
}

TEST(Picture, ASnapshotIsDrawnNotALink) {
    const Ref<Picture> scratch = Flat(5, 5, black);
    for (const Ref<Picture>& target : Canvases(400, 400)) {
        scratch->Graphics().SetForeColor(black);
        scratch->Graphics().FillRect(0, 0, 5, 5);
        target->Graphics().DrawPicture(*scratch, 0, 0);
        scratch->Graphics().SetForeColor(RGB(9, 9, 9));
        scratch->Graphics().FillRect(1, 1, 1, 1);
        target->Graphics().DrawPicture(*scratch, 10, 10);
        // A picture can be drawn on itself as well.
        target->Graphics().DrawPicture(*target, 100, 100);
        EXPECT_EQ(target->Graphics().Pixel(1, 1), black);
        EXPECT_EQ(target->Graphics().Pixel(11, 11), RGB(9, 9, 9));
        EXPECT_EQ(target->Graphics().Pixel(111, 111), RGB(9, 9, 9));
        EXPECT_EQ(target->Graphics().Pixel(211, 211), white);
    }
}

TEST(Picture, APartIsDrawnOnFromItsOwnCorner) {
    for (const Ref<Picture>& window : Canvases(100, 50)) {
        const auto list = Graphics::ForArea(window, {-1, -1, 60, 30});
        list->SetForeColor(black);
        list->FillRect(0, 0, 1000, 1000);
        EXPECT_EQ(window->Graphics().Pixel(58, 28), black);
        EXPECT_EQ(window->Graphics().Pixel(59, 28), white);
        EXPECT_EQ(window->Graphics().Pixel(58, 29), white);
        const auto grip = Graphics::ForArea(window, {90, 40, 17, 14});
        grip->DrawPicture(*Flat(4, 4, RGB(1, 2, 3)), -2, -2);
        EXPECT_EQ(window->Graphics().Pixel(91, 41), RGB(1, 2, 3));
        EXPECT_EQ(window->Graphics().Pixel(89, 39), white);
        EXPECT_EQ(grip->Pixel(1, 1), RGB(1, 2, 3));
        EXPECT_EQ(list->Pixel(91, 41), white);
    }
    const Ref<Picture> buffer = Picture::MakeBuffer(7, 3);
    buffer->Graphics().SetPixel(6, 2, RGB(1, 2, 3));
    EXPECT_EQ(buffer->Pixels().pixels[buffer->Pixels().stride * 2 + 6], 0x010203U);
    EXPECT_EQ(Picture::MakeBuffer(0, -4)->Pixels().width, 0);
}

/// One drawing after the other, the same on every target.
class RandomDrawing {
  public:
    explicit RandomDrawing(unsigned seed) : random_(seed) {}

    void Draw(const std::vector<Ref<Picture>>& targets) {
        const Ref<Picture> image = Image();
        const Colour colour{static_cast<std::uint32_t>(random_() & 0xFFFFFFU)};
        const int kind = Number(0, 5);
        int n[8];
        for (int& number : n)
            number = Number(-40, 400);
        const int wide = Number(0, 2) == 0 ? 1000 : Number(-3, 700);
        for (const Ref<Picture>& target : targets) {
            Graphics& g = target->Graphics();
            g.SetForeColor(colour);
            if (kind == 0)
                g.FillRect(n[0], n[1], n[2], n[3]);
            else if (kind == 1)
                g.FillRect(-1, n[1], 1000, n[3]);
            else if (kind == 2)
                g.DrawPicture(*image, n[0], n[1]);
            else if (kind == 3)
                g.DrawPicture(*image, n[0], n[1], wide, n[3], n[4] / 8, n[5] / 8, n[6] / 4,
                              n[7] / 4);
            else if (kind == 4)
                g.DrawString("Random text", n[0], n[1]);
            else
                g.DrawPicture(*target, n[0], n[1], n[2], n[3]);
        }
    }

  private:
    int Number(int from, int to) {
        return from + static_cast<int>(random_() % static_cast<unsigned>(to - from + 1));
    }

    Ref<Picture> Image() {
        const int width = Number(1, 90);
        const Ref<Picture> image = Columns(width, Number(1, 30));
        if (Number(0, 1) == 0)
            image->Mask(MaskCreation::MakeIfMissing)
                ->Graphics()
                .DrawPicture(*Columns(width, image->Height()), Number(-5, 5), 0);
        return image;
    }

    std::mt19937 random_;
};

TEST(Picture, RecordedDrawingShowsTheSamePixelsAsDirectDrawing) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        // Too large to be given pixels of its own after being looked at.
        const std::vector<Ref<Picture>> targets = Canvases(340, 300);
        const Ref<Picture> shown = Picture::MakeBuffer(200, 100);
        shown->Graphics().FillRect(0, 0, 200, 100);
        RandomDrawing drawing(seed);
        for (int step = 0; step < 25; ++step)
            drawing.Draw(targets);
        shown->Graphics().DrawPicture(*targets[1], -60, -90);
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 200; ++x)
                ASSERT_EQ(shown->Graphics().Pixel(x, y),
                          targets[0]->Graphics().Pixel(x + 60, y + 90))
                    << "seed " << seed << " at " << x << ", " << y;
        EXPECT_EQ(targets[1]->Graphics().Pixel(7, 290), targets[0]->Graphics().Pixel(7, 290));
    }
}

TEST(Picture, WhatNobodyPaintedIsWhiteHoweverDeepItLies) {
    for (const int depth : {0, 1, 20000}) {
        Ref<Picture> picture = NewPicture(300, 300, 32);
        picture->Graphics().FillRect(100, 0, 200, 300);
        for (int i = 0; i < depth; ++i) {
            const Ref<Picture> next = NewPicture(300, 300, 32);
            next->Graphics().DrawPicture(*picture, 0, 0);
            picture = next;
        }
        const Ref<Picture> shown = Picture::MakeBuffer(300, 300);
        shown->Graphics().FillRect(0, 0, 300, 300);
        shown->Graphics().DrawPicture(*picture, 0, 0);
        EXPECT_EQ(shown->Graphics().Pixel(99, 150), white) << depth;
        EXPECT_EQ(shown->Graphics().Pixel(100, 150), black) << depth;
    }
}

TEST(Picture, MayBeFarLargerThanMemory) {
    const Ref<Picture> list = NewPicture(most, most, 32);
    Graphics& g = list->Graphics();
    for (int row = 0; row < 1000; ++row) {
        g.SetForeColor(RGB(row % 256, row / 256, 0));
        g.FillRect(0, row * 73, most, (row + 1) * 73 + 1);
        g.DrawString("row", 10, row * 73 + 18);
    }
    const Ref<Picture> shown = NewPicture(340, 146, 32);
    shown->Graphics().DrawPicture(*list, 0, -998 * 73);
    EXPECT_EQ(shown->Graphics().Pixel(0, 72), RGB(998 % 256, 998 / 256, 0));
    EXPECT_EQ(shown->Graphics().Pixel(0, 145), RGB(999 % 256, 999 / 256, 0));
    EXPECT_EQ(g.Pixel(most - 1, 999 * 73 + 1000), RGB(999 % 256, 999 / 256, 0));
    EXPECT_EQ(g.Pixel(5, most - 1), white);
    // Scaling it as a whole would take more than there is: whatever comes, nothing breaks.
    shown->Graphics().DrawPicture(*list, 0, 0, 340, 146);
    const Ref<Picture> masked = NewPicture(most, 3, 32);
    masked->Mask(MaskCreation::MakeIfMissing)->Graphics().FillRect(0, 0, most, 3);
    shown->Graphics().DrawPicture(*masked, 0, 0);
    EXPECT_EQ(shown->Graphics().Pixel(339, 2), white);
}

TEST(Picture, TextStandsOnItsBaselineInItsColour) {
    for (const Ref<Picture>& row : Canvases(340, 73)) {
        Graphics& g = row->Graphics();
        g.SetTextSize(11);
        g.SetForeColor(RGB(5, 5, 5));
        g.DrawString("HEFT &amp; <b>", 10, 18);
        int darkest = 255;
        int lastInk = -1;
        int firstInk = 340;
        for (int y = 0; y < 73; ++y)
            for (int x = 0; x < 340; ++x)
                if (const Colour ink = g.Pixel(x, y); ink != white) {
                    darkest = std::min(darkest, ink.Red());
                    firstInk = std::min(firstInk, x);
                    if (x < 30)
                        lastInk = y;
                }
        EXPECT_EQ(darkest, 5);
        EXPECT_EQ(lastInk, 17);
        EXPECT_GE(firstInk, 10);
        EXPECT_LE(firstInk, 12);
        // A line that runs out of the picture is cut, wherever it starts.
        g.DrawString(std::string(1000000, 'W'), 300, 60);
        EXPECT_NE(g.StringWidth("W"), 0.0);
    }
}

} // namespace
} // namespace kqu

#include "framework/ui/Picture.h"

#include "framework/ui/drawing/Plane.h"
#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using simulation::Grey;

constexpr Colour black = RGB(0, 0, 0);

/// A picture flat in one colour, with a flat mask unless that is negative.
Ref<Picture> Flat(int width, int height, Colour colour, int mask = -1) {
    const Ref<Picture> picture = NewPicture(width, height, 32);
    picture->Graphics().SetForeColor(colour);
    picture->Graphics().FillRect(0, 0, width, height);
    if (mask >= 0)
        picture->Mask(MaskCreation::MakeIfMissing)
            ->Graphics()
            .DrawPicture(*Flat(width, height, Grey(mask)), 0, 0);
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

/// Pixels that are there from the start, and recorded ones.
std::vector<Ref<Picture>> Canvases(int width, int height) {
    return {Picture::MakeBuffer(width, height), NewPicture(width, height, 32)};
}

Colour At(const Ref<Picture>& picture, int x, int y) {
    return picture->Graphics().Pixel(x, y);
}

Ref<Picture> MaskOf(const Ref<Picture>& picture) {
    return picture->Mask(MaskCreation::MakeIfMissing);
}

TEST(Picture, BlendsThroughItsMaskToTheNearestValue) {
    for (int mask = 0; mask < 256; ++mask) {
        const auto mixed = [mask](int source, int under) {
            return (2 * (source * (255 - mask) + under * mask) + 255) / 510;
        };
        for (const Ref<Picture>& below : Canvases(1, 1)) {
            below->Graphics().SetPixel(0, 0, RGB(241, 13, 200));
            below->Graphics().DrawPicture(*Flat(1, 1, RGB(101, 255, 3), mask), 0, 0);
            EXPECT_EQ(At(below, 0, 0), RGB(mixed(101, 241), mixed(255, 13), mixed(3, 200)));
        }
    }
}

/// One drawing after the other, the same on every target.
class RandomDrawing {
  public:
    explicit RandomDrawing(unsigned seed) : random_(seed) {}

    void Draw(const std::vector<Ref<Picture>>& targets) {
        const Ref<Picture> image = Columns(Number(1, 90), Number(1, 30));
        if (Number(0, 1) == 0)
            MaskOf(image)->Graphics().DrawPicture(*Columns(image->Width(), 30), Number(-5, 5), 0);
        const Colour colour{static_cast<std::uint32_t>(random_() & 0xFFFFFFU)};
        const int kind = Number(0, 4);
        int n[8];
        for (int& number : n)
            number = Number(-40, 400);
        const int wide = Number(0, 2) == 0 ? 1000 : n[2];
        for (const Ref<Picture>& target : targets) {
            Graphics& g = target->Graphics();
            g.SetForeColor(colour);
            if (kind == 0)
                g.FillRect(n[0], n[1], wide, n[3]);
            else if (kind == 1)
                g.DrawPicture(*image, n[0], n[1]);
            else if (kind == 2)
                g.DrawPicture(*image, n[0], n[1], wide, n[3], n[4] / 8, n[5] / 8, n[6] / 4,
                              n[7] / 4);
            else if (kind == 3)
                g.DrawString("Random text", n[0], n[1]);
            else
                g.DrawPicture(*target, n[0], n[1], n[2], n[3]);
        }
    }

  private:
    int Number(int from, int to) {
        return from + static_cast<int>(random_() % static_cast<unsigned>(to - from + 1));
    }
    std::mt19937 random_;
};

TEST(Picture, RecordedDrawingShowsTheSamePixelsAsDirectDrawing) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        // Too large to be given pixels of its own after being looked at.
        const std::vector<Ref<Picture>> targets = Canvases(340, 300);
        const Ref<Picture> shown = Flat(200, 100, black);
        RandomDrawing drawing(seed);
        for (int step = 0; step < 60; ++step)
            drawing.Draw(targets);
        shown->Graphics().DrawPicture(*targets[1], -60, -90);
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 200; ++x)
                ASSERT_EQ(At(shown, x, y), At(targets[0], x + 60, y + 90))
                    << "seed " << seed << " at " << x << ", " << y;
        EXPECT_EQ(At(targets[1], 7, 290), At(targets[0], 7, 290));
    }
}

TEST(Picture, SignsWithColoursOfTheirOwnKeepThem) {
    for (const Ref<Picture>& row : Canvases(60, 30)) {
        Graphics& g = row->Graphics();
        g.SetTextSize(16);
        g.SetForeColor(RGB(0, 0, 255));
        g.DrawString("\xF0\x9F\x98\x80", 20, 22);
        int yellow = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 20; x < 45; ++x)
                yellow += g.Pixel(x, y).Red() - g.Pixel(x, y).Blue() > 100 ? 1 : 0;
        EXPECT_GT(yellow, 100);
    }
}

} // namespace
} // namespace kqu

#include "framework/values/Exceptions.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kqu {
namespace {

using namespace simulation;

/// A sprite whose parts are told apart by their colours: the columns of the fill (f), of the
/// track's slices (l m r) and of the tick (1 2).
class ProgressBarTest : public testing::Test {
  protected:
    static Colour ColourOf(char letter) { return RGB(0, letter, 255 - letter); }

    Ref<Picture> Bar(std::int32_t width, double value, double maximum = 100.0) {
        Dictionary record;
        machine.Panel().MyWindowEventList->ListProgress(width, value, maximum, record);
        return record.Value("progresspict").ObjectAs<Picture>();
    }
    /// A line of the bar; a blank is as the picture was made.
    static std::string Letters(const Ref<Picture>& bar) {
        std::string letters;
        for (int x = 0; x < bar->Width(); ++x) {
            const Colour colour = bar->Graphics().Pixel(x, height - 1);
            letters += colour == Grey(255) ? ' ' : static_cast<char>(colour.Green());
        }
        return letters;
    }

    static constexpr int height = 6;
    Artwork artwork;
    SimulatedMachine machine;
};

TEST_F(ProgressBarTest, TrackFillAndTicksStandWhereTheyBelong) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        int width;
        double value;
        const char* letters;
    };
    const char* const empty = "lllll12mmm12mmm12mmm12mmm12mmm12mmm12mmm12mmm12rrr";
    const char* const full = "fffff12fff12fff12fff12fff12fff12fff12fff12fff12fff";
    const char* const track = "lllllmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmrrrrr";
    // Not transparent, so that the ticks' own colours can be read off.
    artwork.Set(171, 47, height,
                [](int x, int) { return ColourOf("???ffflmr12"[x < 45 ? x / 5 : x - 36]); });
    artwork.Set(172, 47, height, [](int, int) { return Grey(0); });
    machine.Start();
    for (const auto& [width, value, letters] : {
             Case{50, 0, empty},
             {50, 0.5, empty},
             {50, -0.5, empty},
             {50, 49.9, "fffff12fff12fff12fff12ffm12mmm12mmm12mmm12mmm12rrr"},
             {50, 50, "fffff12fff12fff12fff12fff12mmm12mmm12mmm12mmm12rrr"},
             {50, 150, full},
             {50, infinity, full},
             {50, -1, "                                                  "},
             {50, -2, track},
             {50, -infinity, track},
             {50, std::nan(""), track},
             // The sum of ten steps stays below the whole, and the tenth tick shows.
             {49, 100, "ffff12fff12fff12fff12fff12fff12fff12fff12fff12ff1"},
             {8, 0, "11111111"},
         }) {
        const Ref<Picture> bar = Bar(width, value);
        EXPECT_EQ(Letters(bar), letters) << value;
        EXPECT_EQ(bar->Height(), height);
    }
    EXPECT_EQ(Letters(Bar(50, 25, 0)), empty);
    EXPECT_EQ(Letters(Bar(50, 25, 50)), Letters(Bar(50, 50)));
    for (const int width : {0, -2})
        EXPECT_THROW(Bar(width, 10), RuntimeException);
}

} // namespace
} // namespace kqu

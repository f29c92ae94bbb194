#include "framework/values/Exceptions.h"
#include "platform/functions/Functions.h"
#include "tests/oracle/Differences.h"
#include "tests/oracle/Random.h"
#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

#include <limits>

namespace kqu::oracle {
namespace {

using namespace simulation;

// What rows and a user's hand lead to is in the random lives.
TEST(PanelRules, SizesThatAreAskedFor) {
    ForCases(40, [](Random& random) {
        SimulatedMachine machine;
        machine.windows.echo = random.OneIn(2) ? SizeEcho::AtOnce : SizeEcho::Never;
        machine.Start();
        Panel expected;
        const PanelPlace place = DefaultPlace(1280, 340);
        expected.left = place.left;
        expected.top = place.top;
        expected.Resize(340, 185, false, true, 0);
        const int rows = random.Between(0, 12);
        for (int row = 1; row <= rows; ++row) {
            machine.PostScanner("KQS_disk." + std::to_string(row), "10");
            machine.Advance();
            expected.RowCame(row, 800);
        }
        int laidOut = 0;
        machine.functions.Set<functions::SizeWindow>([&](auto&&...) { ++laidOut; });
        for (int event = 0; event < 40 && !testing::Test::HasFailure(); ++event) {
            laidOut = 0;
            const int width = random.Of<int>({269, 270, 271, 499, 500, 501, 340, -7, 1000000});
            const int height = expected.height +
                               random.Of<int>({0, 36, 37, -36, -37, 73, -73, 900}) +
                               (random.OneIn(4) ? random.Between(-90, 90) : 0);
            const bool exact = random.OneIn(3), force = random.OneIn(2);
            machine.Panel().ChangeWindowSize(width, height, exact, force);
            EXPECT_EQ(laidOut > 0, expected.Resize(width, height, exact, force, rows));
            EXPECT_EQ(Difference(machine, expected, rows, Module1.ParentIsMarlstone), "");
        }
    });
}

Colour ColourOf(char letter) {
    return letter == ' ' ? RGB(255, 255, 255) : RGB(0, letter * 37 % 256, 255 - letter * 37 % 256);
}

TEST(PanelRules, Bars) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Artwork artwork;
    artwork.Set(171, 47, 5,
                [](int x, int) { return ColourOf("???ffflmr12"[x < 45 ? x / 5 : x - 36]); });
    artwork.Set(172, 47, 5, [](int x, int) { return x >= 30 && x < 45 ? Grey(128) : Grey(0); });
    SimulatedMachine machine;
    machine.Start();
    MyEventList& list = *machine.Panel().MyWindowEventList;
    ForCases(500, [&](Random& random) {
        const int width = random.OneIn(20) ? random.Between(-2, 3000) : random.Between(1, 520);
        const double maximum =
            random.Of<double>({100, 100, 100, 0, 50, 1e-300, -100, random.Real(-1e9, 1e9)});
        const double part = random.Between(0, width + 1) * 100.0 / width;
        const double value = random.Of<double>(
            {part, std::nextafter(part, 0.0), random.Real(0, 101), random.Real(-1e300, 1e300), 100,
             45.6, 0, -0.5, -1, -2, std::nextafter(-1.0, 0.0), std::nextafter(-1.0, -2.0), 150,
             1e300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 5e-324});
        Dictionary record;
        if (width < 1) {
            EXPECT_THROW(list.ListProgress(width, value, maximum, record), RuntimeException);
            return;
        }
        list.ListProgress(width, value, maximum, record);
        const auto bar = record.Value("progresspict").ObjectAs<Picture>();
        ASSERT_EQ(bar->Width(), width);
        ASSERT_EQ(bar->Height(), 5);
        const Bar expected{width, value, maximum};
        // Some columns at each end are enough of a long one.
        for (int x = 0; x < width; x = x == 300 ? std::max(x + 1, width - 300) : x + 1) {
            SCOPED_TRACE(testing::Message() << width << " wide, " << value << " of " << maximum);
            const char letter = expected.Colour(x), mask = expected.Mask(x);
            const int grey = mask == 'f' ? 0 : mask == 't' ? 128 : 255;
            const bool isThinned = letter == 'l' || letter == 'm' || letter == 'r';
            const Colour shown = bar->Graphics().Pixel(x, x % 5), whole = ColourOf(letter);
            for (const auto channel : {&Colour::Red, &Colour::Green, &Colour::Blue})
                ASSERT_NEAR((shown.*channel)(),
                            isThinned ? 255 - (255 - (whole.*channel)()) * 127 / 255
                                      : (whole.*channel)(),
                            isThinned)
                    << x;
            ASSERT_EQ(bar->Mask(MaskCreation::IfThere)->Graphics().Pixel(x, x % 5), Grey(grey))
                << x;
        }
    });
}

} // namespace
} // namespace kqu::oracle

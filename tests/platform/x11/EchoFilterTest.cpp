#include "platform/x11/EchoFilter.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
const Moment start{1h};

TEST(EchoFilter, ReportsInTheEndWhatOthersDidAndNoEchoes) {
    EchoFilter<int> place(1);
    for (int step = 0; step < 10; ++step) {
        place.Observe(10 + step, start + 100ms * step);
        EXPECT_FALSE(place.Settle(start + 100ms * step));
    }
    EXPECT_FALSE(place.Settle(*place.Due() - 1ms));
    EXPECT_EQ(place.Settle(*place.Due()), 19);
    for (const int wish : {2, 3, 4})
        place.Request(wish, start + 5s);
    // Echoes come late, twice, and one for several.
    for (const int echo : {19, 2, 2, 4, 4})
        place.Observe(echo, start + 6s);
    EXPECT_FALSE(place.Due());
    // A manager that refuses is believed, whether it says so or not.
    for (const bool answers : {true, false}) {
        place.Request(9, start + 10s);
        if (answers)
            place.Observe(4, start + 11s);
        EXPECT_FALSE(place.Settle(start + 11s));
        EXPECT_EQ(place.Settle(start + 13s), 4);
    }
}

} // namespace
} // namespace kqu::platform

#include "platform/x11/EchoFilter.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
const Moment start{1h};

TEST(EchoFilter, ReportsWhatOthersDidOnceItIsQuiet) {
    EchoFilter<int> place(1);
    for (int step = 0; step < 10; ++step) {
        place.Observe(10 + step, start + 100ms * step);
        EXPECT_FALSE(place.Settle(start + 100ms * step));
    }
    ASSERT_TRUE(place.Due());
    EXPECT_FALSE(place.Settle(*place.Due() - 1ms));
    EXPECT_EQ(place.Settle(*place.Due()), 19);
    EXPECT_EQ(place.Believed(), 19);
    place.Observe(19, start + 5s);
    EXPECT_FALSE(place.Due());
    // Back where it was before anybody could notice.
    place.Observe(7, start + 6s);
    place.Observe(19, start + 6s);
    EXPECT_FALSE(place.Due());
}

TEST(EchoFilter, IsPatientWithItsOwnRequests) {
    EchoFilter<int> place(1);
    for (const int wish : {2, 3, 4})
        place.Request(wish, start);
    // Echoes come late, twice, and one for several.
    for (const int echo : {1, 2, 2, 4, 4})
        place.Observe(echo, start + 1s);
    EXPECT_FALSE(place.Due());
    // A manager that refuses is believed in the end, whether it says so or not.
    for (const bool answers : {true, false}) {
        place.Request(9, start + 10s);
        if (answers)
            place.Observe(4, start + 11s);
        EXPECT_FALSE(place.Settle(start + 11s));
        EXPECT_EQ(place.Settle(start + 13s), 4);
    }
    // What is acknowledged or assumed is not reported.
    place.Acknowledge(6);
    EXPECT_EQ(place.Actual(), 6);
    EXPECT_FALSE(place.Due());
    place.Observe(8, start + 20s);
    place.Assume(8);
    EXPECT_FALSE(place.Due());
}

} // namespace
} // namespace kqu::platform

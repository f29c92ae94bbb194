#include "platform/loop/SystemWaiting.h"

#include <array>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using kqu::platform::Moment;

TEST(SystemWaitingTest, WakesForADescriptorAndForAMomentAndNeverTooEarly) {
    kqu::platform::SystemWaiting waiting;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    std::array watched{pollfd{ends[0], POLLIN, 0}, pollfd{-1, POLLIN, 0}};
    // Down to a nanosecond, which a clock of milliseconds would cut off.
    for (const auto time : {0ns, 1ns, 999ns, 1'000'001ns, 3'999'999ns}) {
        const Moment until = waiting.Now() + time;
        waiting.Wait(watched, until);
        EXPECT_GE(waiting.Now(), until);
    }
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    waiting.Wait(watched, Moment::max());
    EXPECT_EQ(watched[0].revents, POLLIN);
    close(ends[0]);
    close(ends[1]);
}

} // namespace

#include "platform/loop/SystemWaiting.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using kqu::platform::Moment;
using kqu::platform::SystemWaiting;

struct SystemWaitingTest : testing::Test {
    SystemWaitingTest() { EXPECT_EQ(pipe(ends.data()), 0); }
    ~SystemWaitingTest() override {
        close(ends[0]);
        close(ends[1]);
    }
    SystemWaiting waiting;
    std::array<int, 2> ends{};
};

TEST_F(SystemWaitingTest, NeverWakesBeforeTheMoment) {
    std::array watched{pollfd{ends[0], POLLIN, 0}, pollfd{-1, POLLIN, 0}};
    // Down to a nanosecond, which a clock of milliseconds would cut off.
    for (const auto time : {0ns, 1ns, 999ns, 1'000'001ns, 3'999'999ns}) {
        const Moment until = waiting.Now() + time;
        waiting.Wait(watched, until);
        EXPECT_GE(waiting.Now(), until);
    }
    waiting.Wait(watched, Moment{});
    waiting.Wait({}, waiting.Now() + 1ms);
}

TEST_F(SystemWaitingTest, AReadyDescriptorWakesWithAndWithoutAMoment) {
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    std::array watched{pollfd{ends[0], POLLIN, 0}};
    waiting.Wait(watched, std::nullopt);
    waiting.Wait(watched, Moment::max());
    EXPECT_EQ(watched[0].revents, POLLIN);
}

TEST_F(SystemWaitingTest, ASignalWakes) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    struct sigaction former {};
    sigaction(SIGALRM, &action, &former);
    const itimerval soon{{0, 0}, {0, 20000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
    std::array watched{pollfd{ends[0], POLLIN, 0}};
    waiting.Wait(watched, std::nullopt);
    sigaction(SIGALRM, &former, nullptr);
}

} // namespace

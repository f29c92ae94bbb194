#include "platform/loop/SignalSource.h"
#include "platform/loop/SystemWaiting.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace {

using namespace std::chrono_literals;
using kqu::platform::EventQueue;
using kqu::platform::Moment;
using kqu::platform::SignalSource;

struct SignalSourceTest : testing::Test, EventQueue {
    void Post(std::function<void()> /*delivery*/) override { FAIL() << "nothing is to wait"; }
    /// How many requests to terminate have been heard; whether the loop would have been woken.
    std::pair<int, bool> Heard() {
        pollfd watch = source->Watch();
        const bool isReady = poll(&watch, 1, 0) == 1;
        EXPECT_FALSE(source->Collect(*this));
        source->Interrupt();
        return {requests, isReady};
    }
    int requests = 0;
    std::unique_ptr<SignalSource> source;
};

TEST_F(SignalSourceTest, EachSignalWakesTheLoopAndIsHeardOnce) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        requests = 0;
        source.reset();
        source = std::make_unique<SignalSource>([this] { ++requests; });
        EXPECT_EQ(Heard(), std::pair(0, false));
        raise(signal);
        raise(signal);
        EXPECT_EQ(Heard(), std::pair(1, true));
        EXPECT_EQ(Heard(), std::pair(1, false));
    }
    // A broken pipe is an error of the write and nothing more.
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    EXPECT_EQ(write(ends[1], "x", 1), -1);
    close(ends[1]);
}

TEST_F(SignalSourceTest, TheFormerHandlersComeBack) {
    source.reset();
    const auto former = std::signal(SIGTERM, SIG_IGN);
    source = std::make_unique<SignalSource>([] {});
    source.reset();
    EXPECT_EQ(std::signal(SIGTERM, former), SIG_IGN);
}

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
    waiting.Wait({}, Moment{});
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    waiting.Wait(watched, Moment::max());
    EXPECT_EQ(watched[0].revents, POLLIN);
    close(ends[0]);
    close(ends[1]);
}

} // namespace

#include "platform/loop/SignalSource.h"
#include "platform/loop/SystemWaiting.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using kqu::platform::EventQueue;
using kqu::platform::Moment;
using kqu::platform::SignalSource;

struct SignalSourceTest : testing::Test, EventQueue {
    void Post(std::function<void()> delivery) override { delivery(); }
    /// How many requests to terminate are delivered, without waiting.
    int Deliver() {
        pollfd watch = source->Watch();
        const bool isReady = poll(&watch, 1, 0) == 1;
        requests = 0;
        EXPECT_FALSE(source->Collect(*this));
        EXPECT_EQ(requests > 0, isReady);
        return requests;
    }
    int requests = 0;
    std::unique_ptr<SignalSource> source = std::make_unique<SignalSource>([this] { ++requests; });
};

TEST_F(SignalSourceTest, SignalsArriveAsOneDeliveryPerWakeUp) {
    EXPECT_EQ(Deliver(), 0);
    for (const int signal : {SIGTERM, SIGINT}) {
        raise(signal);
        raise(signal);
        EXPECT_EQ(Deliver(), 1);
        EXPECT_EQ(Deliver(), 0);
    }
    // A broken pipe is an error of the write and nothing more.
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    EXPECT_EQ(write(ends[1], "x", 1), -1);
    close(ends[1]);
}

TEST_F(SignalSourceTest, ASignalDoesNotCutAReadShort) {
    FILE* const command = popen("sleep 0.1; kill -TERM $PPID; sleep 0.1; echo whole", "r");
    ASSERT_NE(command, nullptr);
    std::array<char, 16> text{};
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), command), 6U);
    EXPECT_STREQ(text.data(), "whole\n");
    pclose(command);
    EXPECT_EQ(Deliver(), 1);
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

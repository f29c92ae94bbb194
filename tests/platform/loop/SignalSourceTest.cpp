#include "platform/loop/SignalSource.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

namespace {

using kqu::platform::EventQueue;
using kqu::platform::SignalSource;

struct SignalSourceTest : testing::Test, EventQueue {
    void Post(std::function<void()> delivery) override { queue.push_back(std::move(delivery)); }
    /// How many requests to terminate are delivered.
    int Deliver(SignalSource& source) {
        requests = 0;
        EXPECT_FALSE(source.Collect(*this));
        for (const auto& delivery : std::exchange(queue, {}))
            delivery();
        return requests;
    }
    static bool IsReady(const SignalSource& source) {
        pollfd watch = source.Watch();
        return poll(&watch, 1, 0) == 1;
    }
    std::vector<std::function<void()>> queue;
    int requests = 0;
};

TEST_F(SignalSourceTest, SignalsArriveAsOneDeliveryPerWakeUp) {
    SignalSource source([this] { ++requests; });
    EXPECT_FALSE(IsReady(source));
    EXPECT_EQ(Deliver(source), 0);
    for (const int signal : {SIGTERM, SIGINT}) {
        raise(signal);
        raise(signal);
        EXPECT_TRUE(IsReady(source));
        EXPECT_EQ(Deliver(source), 1);
        EXPECT_FALSE(IsReady(source));
    }
    EXPECT_EQ(fcntl(source.Watch().fd, F_GETFD), FD_CLOEXEC);
}

TEST_F(SignalSourceTest, ABrokenPipeIsAnErrorOfTheWriteAndNothingMore) {
    SignalSource source([this] { ++requests; });
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    EXPECT_EQ(write(ends[1], "x", 1), -1);
    close(ends[1]);
    EXPECT_EQ(Deliver(source), 0);
}

TEST_F(SignalSourceTest, CommandsStartWithTheDefaultsAndAnOpenMask) {
    const SignalSource source([] {});
    // Bits 1, 12 and 14 of the masks stand for SIGINT, SIGPIPE and SIGTERM.
    FILE* const command = popen("grep -E '^Sig(Blk|Ign)' /proc/self/status", "r");
    ASSERT_NE(command, nullptr);
    std::array<char, 64> line{};
    int lines = 0;
    while (std::fgets(line.data(), line.size(), command) != nullptr) {
        ++lines;
        const unsigned long mask = std::strtoul(line.data() + 8, nullptr, 16);
        EXPECT_EQ(mask & (1UL << 1 | 1UL << 12 | 1UL << 14), 0U) << line.data();
    }
    EXPECT_EQ(lines, 2);
    pclose(command);
}

TEST_F(SignalSourceTest, ASignalDoesNotCutAReadShort) {
    SignalSource source([this] { ++requests; });
    FILE* const command = popen("sleep 0.1; kill -TERM $PPID; sleep 0.1; echo whole", "r");
    ASSERT_NE(command, nullptr);
    std::array<char, 16> text{};
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), command), 6U);
    EXPECT_EQ(std::ferror(command), 0);
    EXPECT_STREQ(text.data(), "whole\n");
    pclose(command);
    EXPECT_EQ(Deliver(source), 1);
}

TEST_F(SignalSourceTest, TheFormerHandlersComeBack) {
    const auto former = std::signal(SIGTERM, SIG_IGN);
    {
        const SignalSource source([] {});
    }
    EXPECT_EQ(std::signal(SIGTERM, former), SIG_IGN);
    const SignalSource another([] {});
}

} // namespace

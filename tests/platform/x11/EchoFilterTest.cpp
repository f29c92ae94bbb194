#include "platform/x11/EchoFilter.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using kqu::platform::EchoFilter;
using kqu::platform::Moment;
using namespace std::chrono_literals;

constexpr Moment start{1h};

struct EchoFilterTest : testing::Test {
    EchoFilter<int> filter{73};
    Moment now = start;
    std::vector<int> told;

    void Ask(int value) { filter.Request(value, now); }
    void See(int value) {
        if (const auto change = filter.Observe(value, now))
            told.push_back(*change);
    }
    void Pass(std::chrono::milliseconds time) {
        const Moment end = now + time;
        while (const auto due = filter.Due()) {
            if (*due > end)
                break;
            now = std::max(now, *due);
            if (const auto change = filter.Settle(now))
                told.push_back(*change);
            ASSERT_NE(filter.Due(), due) << "would be due for ever";
        }
        now = end;
    }
};

TEST_F(EchoFilterTest, OutsideChangesAreToldAtOnceAndOnce) {
    See(73);
    See(300);
    See(300);
    See(73);
    EXPECT_EQ(told, (std::vector{300, 73}));
    EXPECT_FALSE(filter.Due());
}

TEST_F(EchoFilterTest, EchoesOfABurstAreNotTold) {
    const std::vector<int> burst{146, 219, 292, 365, 438, 511, 584};
    const std::vector<std::vector<int>> answers{
        burst,           {584},
        {146, 438, 584}, {146, 146, 219, 219, 292, 292, 365, 365, 438, 438, 511, 511, 584, 584},
        {73, 584, 584},  {146, 73, 584},
    };
    for (const auto& echoes : answers) {
        filter.Assume(73);
        for (const int value : burst)
            Ask(value);
        for (const int value : echoes) {
            Pass(200ms);
            See(value);
        }
        Pass(20s);
        EXPECT_EQ(told, std::vector<int>());
        EXPECT_EQ(filter.Believed(), 584);
    }
}

TEST_F(EchoFilterTest, ASlowManagerIsWaitedForInTheMiddleOfABurst) {
    Ask(146);
    Ask(219);
    See(146);
    Pass(1900ms);
    See(219);
    Pass(20s);
    EXPECT_TRUE(told.empty());
}

TEST_F(EchoFilterTest, TheSameSizeTwiceInABurstIsNoOutsideChange) {
    Ask(146);
    Ask(73);
    Ask(146);
    for (const int value : {146, 146, 73, 73, 146, 146})
        See(value);
    Pass(20s);
    EXPECT_TRUE(told.empty());
    See(73);
    EXPECT_EQ(told, std::vector{73});
}

TEST_F(EchoFilterTest, WhatStaysAgainstARequestIsToldAfterAWhile) {
    Ask(146);
    See(500);
    Pass(240ms);
    EXPECT_TRUE(told.empty());
    Pass(20ms);
    EXPECT_EQ(told, std::vector{500});
    // The late answer to the request is the truth by then, and the owner believes otherwise.
    See(146);
    Pass(1s);
    EXPECT_EQ(told, (std::vector{500, 146}));
}

TEST_F(EchoFilterTest, AManagerThatInsistsIsToldOnceHoweverOftenTheOwnerAsks) {
    for (int round = 0; round < 5; ++round) {
        Ask(146);
        See(73);
        Pass(3s);
    }
    EXPECT_EQ(told, std::vector{73});
    EXPECT_FALSE(filter.Due());
    See(200);
    Pass(3s);
    EXPECT_EQ(told, (std::vector{73, 200}));
}

TEST_F(EchoFilterTest, QuietAcknowledgementsTellNothingAndAnswerRequests) {
    Ask(146);
    EXPECT_TRUE(filter.Acknowledge(146, now));
    EXPECT_FALSE(filter.Acknowledge(90, now));
    EXPECT_EQ(filter.Actual(), 90);
    See(90);
    Pass(3s);
    EXPECT_TRUE(told.empty());
    See(146);
    EXPECT_TRUE(told.empty());
    See(90);
    EXPECT_EQ(told, std::vector{90});
}

// Whatever the order of requests, answers and outside changes: in the end the owner believes what
// is there.
TEST_F(EchoFilterTest, OwnerAndServerAgreeInTheEnd) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned limit) { return static_cast<int>(random() % limit); };
        EchoFilter<int> tried(0);
        std::vector<int> waiting;
        Moment time = start;
        int there = 0;
        for (int event = 0; event < 40; ++event) {
            time += std::chrono::milliseconds(upTo(400));
            static_cast<void>(tried.Settle(time));
            const int what = upTo(4);
            if (what == 0) {
                waiting.push_back(upTo(5));
                tried.Request(waiting.back(), time);
            } else if (what == 1 && !waiting.empty()) {
                there = waiting.front();
                waiting.erase(waiting.begin());
                static_cast<void>(tried.Observe(there, time));
            } else if (what == 2) {
                there = upTo(5);
                static_cast<void>(tried.Observe(there, time));
            }
        }
        for (const int last : waiting) {
            there = last;
            static_cast<void>(tried.Observe(there, time));
        }
        static_cast<void>(tried.Settle(time + 3s));
        EXPECT_EQ(tried.Believed(), there) << "seed " << seed;
        EXPECT_EQ(tried.Actual(), there) << "seed " << seed;
    }
}

} // namespace

#include "framework/events/EventLoop.h"

#include "framework/events/LoopTimer.h"
#include "tests/support/SimulatedWaiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace std::chrono_literals;
using simulation::SimulatedWaiting;

/// A source that has a number of events ready at each look.
class ChattySource final : public platform::EventSource {
  public:
    [[nodiscard]] pollfd Watch() const override { return {-1, 0, 0}; }
    bool Collect(platform::EventQueue& queue) override {
        ++looks;
        for (int i = 0; i < eventsPerLook; ++i)
            queue.Post([this] { ++delivered; });
        return eventsPerLook > 0;
    }
    int eventsPerLook = 0;
    int looks = 0;
    int delivered = 0;
};

class EventLoopTest : public testing::Test {
  protected:
    void RunFor(std::chrono::nanoseconds time) {
        waiting.At(waiting.SinceStart() + time, [this] { loop.Quit(); });
        loop.Run();
    }
    [[nodiscard]] double Seconds() const {
        return std::chrono::duration<double>(waiting.SinceStart()).count();
    }

    SimulatedWaiting waiting;
    EventLoop loop{waiting};
};

TEST_F(EventLoopTest, TimersFireInTheOrderOfTheirDueTimesAndNeverEarly) {
    std::vector<std::string> fired;
    LoopTimer slow(loop, [&] { fired.push_back("slow " + std::to_string(Seconds())); });
    LoopTimer quick(loop, [&] { fired.push_back("quick " + std::to_string(Seconds())); });
    slow.Start(3000ms, LoopTimer::Repeat::Once);
    quick.Start(2000ms, LoopTimer::Repeat::Always);
    RunFor(4500ms);
    EXPECT_EQ(fired,
              (std::vector<std::string>{"quick 2.000000", "slow 3.000000", "quick 4.000000"}));
    EXPECT_FALSE(slow.IsRunning());
}

TEST_F(EventLoopTest, RepeatingTimerKeepsItsPhaseAndCollapsesMissedPeriods) {
    std::vector<double> fired;
    LoopTimer timer(loop, [&] {
        fired.push_back(Seconds());
        waiting.Pass(fired.size() == 2 ? 10s : 1500ms);
    });
    timer.Start(3000ms, LoopTimer::Repeat::Always);
    RunFor(22s);
    // The second pass lasts from 6 to 16: what was missed comes once, at once, and then 18 again.
    EXPECT_EQ(fired, (std::vector<double>{3.0, 6.0, 16.0, 18.0, 21.0}));
}

TEST_F(EventLoopTest, TimerStartedAnewCountsFromThere) {
    std::vector<double> fired;
    LoopTimer timer(loop, [&] { fired.push_back(Seconds()); });
    timer.Start(10s, LoopTimer::Repeat::Once);
    waiting.At(6s, [&] { timer.Start(10s, LoopTimer::Repeat::Once); });
    RunFor(30s);
    EXPECT_EQ(fired, (std::vector<double>{16.0}));
}

TEST_F(EventLoopTest, TimerComesDueAgainInsideItsOwnAction) {
    int depth = 0;
    int deepest = 0;
    LoopTimer timer(loop, [&] {
        deepest = std::max(deepest, ++depth);
        if (depth < 3) {
            waiting.Pass(1s);
            loop.DoEvents();
        }
        --depth;
    });
    timer.Start(1s, LoopTimer::Repeat::Always);
    RunFor(5s);
    EXPECT_EQ(deepest, 3);
}

TEST_F(EventLoopTest, TimerMayDropItselfWhileItRuns) {
    std::unique_ptr<LoopTimer> timer;
    int fired = 0;
    timer = std::make_unique<LoopTimer>(loop, [&] {
        timer.reset();
        ++fired;
    });
    timer->Start(1s, LoopTimer::Repeat::Always);
    RunFor(5s);
    EXPECT_EQ(fired, 1);
}

TEST_F(EventLoopTest, OnePumpLooksOnceAtEverySourceHoweverMuchItHas) {
    ChattySource chatty;
    chatty.eventsPerLook = 7;
    const auto watching = loop.Watch(chatty);
    int timerFired = 0;
    LoopTimer timer(loop, [&] { ++timerFired; });
    timer.Start(1ms, LoopTimer::Repeat::Always);
    waiting.Pass(1s);
    loop.DoEvents();
    EXPECT_EQ(chatty.looks, 1);
    EXPECT_EQ(chatty.delivered, 7);
    EXPECT_EQ(timerFired, 1);
}

TEST_F(EventLoopTest, WhatIsPostedDuringARoundWaitsForTheNext) {
    std::vector<int> order;
    loop.Post([&] {
        order.push_back(1);
        loop.Post([&] { order.push_back(3); });
    });
    loop.Post([&] { order.push_back(2); });
    loop.DoEvents();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    loop.DoEvents();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(EventLoopTest, NestedPumpDeliversTheNextEventInsideTheFirst) {
    std::vector<std::string> order;
    loop.Post([&] {
        order.emplace_back("first begins");
        loop.DoEvents();
        order.emplace_back("first ends");
    });
    loop.Post([&] { order.emplace_back("second"); });
    loop.DoEvents();
    EXPECT_EQ(order, (std::vector<std::string>{"first begins", "second", "first ends"}));
}

TEST_F(EventLoopTest, NestingIsBoundedAndNothingIsLost) {
    int depth = 0;
    int deepest = 0;
    int delivered = 0;
    for (int i = 0; i < 1000; ++i)
        loop.Post([&] {
            deepest = std::max(deepest, ++depth);
            ++delivered;
            loop.DoEvents();
            --depth;
        });
    RunFor(1s);
    EXPECT_EQ(delivered, 1000);
    EXPECT_EQ(deepest, EventLoop::maximumDepth);
}

TEST_F(EventLoopTest, NothingIsDispatchedAfterQuitAtAnyDepth) {
    std::vector<std::string> order;
    LoopTimer timer(loop, [&] { order.emplace_back("timer"); });
    timer.Start(1ms, LoopTimer::Repeat::Always);
    loop.Post([&] {
        loop.DoEvents();
        waiting.Pass(1s);
        loop.DoEvents();
        order.emplace_back("outer unwinds");
    });
    loop.Post([&] {
        loop.Quit();
        order.emplace_back("quits, and goes on to its end");
    });
    loop.Post([&] { order.emplace_back("never"); });
    loop.Run();
    EXPECT_EQ(order, (std::vector<std::string>{"quits, and goes on to its end", "outer unwinds"}));
}

TEST_F(EventLoopTest, ExceptionsReachTheirHandlerFromEveryDepthAndUnwindNobodyElse) {
    std::vector<std::string> order;
    loop.SetExceptionHandler([&](const std::exception_ptr& error) {
        try {
            std::rethrow_exception(error);
        } catch (const std::exception& known) {
            order.emplace_back(known.what());
        } catch (int number) {
            order.push_back(std::to_string(number));
        }
    });
    loop.Post([&] {
        loop.DoEvents();
        order.emplace_back("outer goes on");
        throw std::runtime_error("outer");
    });
    loop.Post([] { throw std::runtime_error("inner"); });
    LoopTimer timer(loop, [] { throw 42; });
    timer.Start(1ms, LoopTimer::Repeat::Once);
    RunFor(1s);
    EXPECT_EQ(order, (std::vector<std::string>{"inner", "outer goes on", "outer", "42"}));
}

TEST_F(EventLoopTest, WorkBetweenHandlersRunsAtThePumpAndMayBeTakenBack) {
    int shown = 0;
    auto work = loop.BetweenHandlers([&] { ++shown; });
    int shownAtPump = 0;
    loop.Post([&] {
        const int before = shown;
        loop.DoEvents();
        shownAtPump = shown - before;
    });
    loop.DoEvents();
    EXPECT_GE(shownAtPump, 1);
    work.Drop();
    const int before = shown;
    loop.DoEvents();
    EXPECT_EQ(shown, before);
}

TEST_F(EventLoopTest, SleepsUntilSomethingIsDue) {
    LoopTimer timer(loop, [] {});
    timer.Start(500ms, LoopTimer::Repeat::Always);
    RunFor(10s);
    // Twenty firings and the end: no wake-up without a reason.
    EXPECT_LE(waiting.WakeUps(), 21U);
}

} // namespace
} // namespace kqu

#include "framework/loop/EventLoop.h"

#include "framework/loop/LoopTimer.h"
#include "tests/support/SimulatedWaiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace std::chrono_literals;
using simulation::SimulatedWaiting;

/// A source that has seven events ready at each look.
class ChattySource final : public platform::EventSource {
  public:
    [[nodiscard]] pollfd Watch() const override { return {-1, 0, 0}; }
    bool Collect(platform::EventQueue& queue) override {
        for (int i = 0; i < 7; ++i)
            queue.Post([this] { ++delivered; });
        return true;
    }
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

    /// Counts the depth of nesting while it lives.
    struct Nested {
        explicit Nested(EventLoopTest& test) : test_(test) {
            test_.deepest = std::max(test_.deepest, ++test_.depth);
        }
        ~Nested() { --test_.depth; }
        EventLoopTest& test_;
    };

    SimulatedWaiting waiting;
    EventLoop loop{waiting};
    int depth = 0;
    int deepest = 0;
    std::vector<std::string> order;
};

TEST_F(EventLoopTest, RepeatingTimerKeepsItsPhaseAndCollapsesMissedPeriods) {
    std::vector<double> fired;
    LoopTimer timer(loop, [&] {
        fired.push_back(Seconds());
        waiting.Pass(fired.size() == 2 ? 10s : 1500ms);
    });
    timer.Start(3000ms, TimerMode::Repeating);
    RunFor(22s);
    // The second pass lasts from 6 to 16: what was missed comes once, at once, and then 18 again.
    EXPECT_EQ(fired, (std::vector<double>{3.0, 6.0, 16.0, 18.0, 21.0}));
}

TEST_F(EventLoopTest, OnePumpLooksOnceAtEverySourceHoweverMuchItHas) {
    ChattySource chatty;
    const auto watching = loop.Watch(chatty);
    int timerFired = 0;
    LoopTimer timer(loop, [&] { ++timerFired; });
    timer.Start(1ms, TimerMode::Repeating);
    waiting.Pass(1s);
    loop.DoEvents();
    EXPECT_EQ(chatty.delivered, 7);
    EXPECT_EQ(timerFired, 1);
}

TEST_F(EventLoopTest, NestedPumpDeliversTheNextEventInsideTheFirstButNoneThatCameAfterIt) {
    loop.Post([&] {
        order.emplace_back("first begins");
        loop.DoEvents();
        order.emplace_back("first ends");
    });
    loop.Post([&] {
        order.emplace_back("second");
        loop.Post([&] { order.emplace_back("later"); });
    });
    loop.DoEvents();
    EXPECT_EQ(order, (std::vector<std::string>{"first begins", "second", "first ends"}));
    loop.DoEvents();
    EXPECT_EQ(order.back(), "later");
}

TEST_F(EventLoopTest, NestingIsBoundedAndNothingIsLost) {
    int delivered = 0;
    for (int i = 0; i < 1000; ++i)
        loop.Post([&] {
            const Nested nested(*this);
            ++delivered;
            loop.DoEvents();
        });
    RunFor(1s);
    EXPECT_EQ(delivered, 1000);
    EXPECT_EQ(deepest, EventLoop::maximumDepth);
}

TEST_F(EventLoopTest, NothingIsDispatchedAfterQuitAtAnyDepth) {
    LoopTimer timer(loop, [&] { order.emplace_back("timer"); });
    timer.Start(1ms, TimerMode::Repeating);
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

TEST_F(EventLoopTest, AnInterruptionComesBeforeTheNextDeliveryAtEveryDepth) {
    int delivered = 0;
    struct Urgent final : platform::EventSource {
        explicit Urgent(std::function<void()> function) : interrupt(std::move(function)) {}
        bool Collect(platform::EventQueue& /*queue*/) override { return false; }
        void Interrupt() override { interrupt(); }
        std::function<void()> interrupt;
    } urgent([&] {
        if (delivered == 100)
            loop.Quit();
    });
    const auto watching = loop.Watch(urgent);
    for (int i = 0; i < 1000; ++i)
        loop.Post([&] {
            ++delivered;
            loop.DoEvents();
        });
    RunFor(1s);
    EXPECT_EQ(delivered, 100);
}

TEST_F(EventLoopTest, ExceptionsReachTheirHandlerFromEveryDepthAndUnwindNobodyElse) {
    loop.SetExceptionHandler([&](const std::exception_ptr& error) {
        try {
            std::rethrow_exception(error);
        } catch (const char* text) {
            order.emplace_back(text);
        }
    });
    loop.Post([&] {
        loop.DoEvents();
        order.emplace_back("outer goes on");
        throw "outer";
    });
    loop.Post([] { throw "inner"; });
    LoopTimer timer(loop, [] { throw "timer"; });
    timer.Start(1ms, TimerMode::Once);
    RunFor(1s);
    EXPECT_EQ(order, (std::vector<std::string>{"inner", "outer goes on", "outer", "timer"}));
}

} // namespace
} // namespace kqu

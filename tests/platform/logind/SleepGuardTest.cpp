#include "platform/logind/SleepGuard.h"

#include "platform/logind/QuestionTimes.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <map>
#include <poll.h>
#include <unistd.h>
#include <vector>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;

constexpr Moment now{1000s};
constexpr Moment later = now + LockKeeper::patience;

/// A guard, and the office that is answered for by the test.
struct SleepGuardTest : testing::Test, LockOffice {
    /// Somebody listens, and the delaying lock (request 1) is held.
    void SetUp() override {
        guard.Begin(now);
        Grant(1);
    }
    ~SleepGuardTest() override {
        for (const auto& [request, end] : watched)
            close(end);
    }
    std::uint64_t Request(LockMode mode, const std::string& why) override {
        asked.push_back((mode == LockMode::Block ? "block " : "delay ") + why);
        return asked.size();
    }
    void Grant(std::uint64_t request) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        watched[request] = ends[0];
        guard.Granted(request, InhibitorLock::CopyOf(ends[1]));
        close(ends[1]);
    }
    bool IsHeld(std::uint64_t request) const {
        pollfd end{watched.at(request), 0, 0};
        return poll(&end, 1, 0) == 0;
    }

    std::vector<std::string> asked;
    std::map<std::uint64_t, int> watched;
    SleepGuard guard{*this};
};

TEST_F(SleepGuardTest, TheBlockFollowsTheAnswerAndALateLockIsDroppedAtOnce) {
    guard.Answered(false, "", now);
    EXPECT_EQ(asked.size(), 1U);
    // One request at a time, however long the answer takes.
    guard.Answered(true, "a", now);
    guard.Answered(true, "a", later);
    EXPECT_EQ(asked.size(), 2U);
    guard.Answered(false, "", later);
    Grant(2);
    EXPECT_FALSE(IsHeld(2));
    // At once when it is needed again, and only the answer to the new request counts.
    guard.Answered(true, "b", later);
    guard.Refused(2);
    Grant(3);
    EXPECT_TRUE(IsHeld(3));
    guard.End();
    EXPECT_FALSE(IsHeld(3) || IsHeld(1));
    // Without a manager nothing is asked for.
    guard.Answered(true, "c", later);
    EXPECT_EQ(asked.size(), 3U);
}

TEST_F(SleepGuardTest, ALockForAnotherReasonTakesThePlaceOfTheFormerWithoutAGap) {
    guard.Answered(true, "a", now);
    Grant(2);
    // Not for each change in a flood of them.
    guard.Answered(true, "b", later - 1ns);
    EXPECT_EQ(asked.size(), 2U);
    guard.Answered(true, "c", later);
    EXPECT_EQ(asked.at(2), "block c");
    EXPECT_TRUE(IsHeld(2));
    Grant(3);
    EXPECT_FALSE(IsHeld(2));
    EXPECT_TRUE(IsHeld(3));
}

TEST_F(SleepGuardTest, WhatWasRefusedIsAskedForAgainLater) {
    guard.Answered(true, "a", now);
    guard.Refused(2);
    guard.Answered(true, "a", later - 1ns);
    EXPECT_EQ(asked.size(), 2U);
    guard.Answered(true, "a", later);
    EXPECT_EQ(asked.size(), 3U);
    // The delaying one has nobody to ask for it but the guard itself.
    SleepGuard idle(*this);
    idle.Begin(now);
    idle.Refused(4);
    EXPECT_EQ(idle.Due(), later);
    idle.Look(later);
    EXPECT_EQ(idle.Due(), std::nullopt);
    EXPECT_EQ(asked.at(4), asked.at(0));
}

TEST(QuestionTimesTest, TheQuestionIsAskedAfterChangesAndAllTheTimeWhileSomethingRuns) {
    QuestionTimes times;
    // Nothing runs and nothing changes: nobody is woken.
    EXPECT_EQ(times.Due(), std::nullopt);
    times.Changed();
    EXPECT_TRUE(times.IsTime(now));
    times.Asked(now, true);
    EXPECT_TRUE(!times.IsTime(now) && times.IsTime(now + 1s));
    // A flood of changes is asked for now and then.
    times.Changed();
    EXPECT_EQ(times.Due(), now + QuestionTimes::leastGap);
    times.Asked(now, false);
    EXPECT_EQ(times.Due(), std::nullopt);
}

} // namespace
} // namespace kqu::platform

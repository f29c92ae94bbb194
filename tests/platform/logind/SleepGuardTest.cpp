#include "platform/logind/SleepGuard.h"

#include "platform/logind/QuestionTimes.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <unistd.h>
#include <vector>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;

/// An office that is answered for by the test.
class Office final : public LockOffice {
  public:
    ~Office() override {
        for (const auto& [request, end] : watched_)
            close(end);
    }
    std::uint64_t Request(LockMode mode, const std::string& why) override {
        asked.push_back((mode == LockMode::Block ? "block " : "delay ") + why);
        return isReachable ? ++last : 0;
    }
    /// A new lock, as it comes with the answer to a request.
    InhibitorLock Lock(std::uint64_t request) {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        watched_[request] = ends[0];
        InhibitorLock lock = InhibitorLock::CopyOf(ends[1]);
        close(ends[1]);
        return lock;
    }
    bool IsHeld(std::uint64_t request) const {
        pollfd end{watched_.at(request), 0, 0};
        return poll(&end, 1, 0) == 0;
    }

    std::vector<std::string> asked;
    std::uint64_t last = 0;
    bool isReachable = true;

  private:
    std::map<std::uint64_t, int> watched_;
};

class SleepGuardTest : public testing::Test {
  protected:
    /// Somebody listens, and the delaying lock (request 1) is held.
    void SetUp() override {
        guard.Begin(now);
        Grant(1);
    }
    void Grant(std::uint64_t request) { guard.Granted(request, office.Lock(request)); }
    std::size_t Asked() const { return office.asked.size(); }

    Office office;
    SleepGuard guard{office};
    Moment now{1000s};
};

TEST_F(SleepGuardTest, TheBlockFollowsTheAnswer) {
    EXPECT_EQ(office.asked.at(0).substr(0, 6), "delay ");
    guard.Answered(false, "", now);
    EXPECT_EQ(Asked(), 1U);
    guard.Answered(true, "Scanning Data", now);
    EXPECT_EQ(office.asked.at(1), "block Scanning Data");
    // One request at a time, however long the answer takes, and none while the lock is held.
    guard.Answered(true, "Scanning Data", now + 60s);
    Grant(2);
    guard.Answered(true, "Scanning Data", now + 120s);
    EXPECT_EQ(Asked(), 2U);
    EXPECT_TRUE(office.IsHeld(2));
    guard.Answered(false, "", now + 121s);
    EXPECT_FALSE(office.IsHeld(2));
    EXPECT_TRUE(office.IsHeld(1));
    // At once, when it is needed again.
    guard.Answered(true, "Scanning Data", now + 121s);
    EXPECT_EQ(Asked(), 3U);
}

TEST_F(SleepGuardTest, ALockThatComesTooLateIsDroppedAtOnce) {
    guard.Answered(true, "a", now);
    guard.Answered(false, "", now);
    Grant(2);
    EXPECT_FALSE(office.IsHeld(2));
    // Needed again: only the answer to the new request counts.
    guard.Answered(true, "b", now);
    Grant(2);
    EXPECT_FALSE(office.IsHeld(2));
    Grant(3);
    EXPECT_TRUE(office.IsHeld(3));
    guard.End();
    EXPECT_FALSE(office.IsHeld(3));
    EXPECT_FALSE(office.IsHeld(1));
    Grant(4);
    EXPECT_FALSE(office.IsHeld(4));
}

TEST_F(SleepGuardTest, ALockForAnotherReasonTakesThePlaceOfTheFormerWithoutAGap) {
    guard.Answered(true, "a", now);
    Grant(2);
    // Not for each change in a flood of them.
    guard.Answered(true, "b", now + 1s);
    EXPECT_EQ(Asked(), 2U);
    guard.Answered(true, "c", now + LockKeeper::patience);
    EXPECT_EQ(office.asked.at(2), "block c");
    EXPECT_TRUE(office.IsHeld(2));
    Grant(3);
    EXPECT_FALSE(office.IsHeld(2));
    EXPECT_TRUE(office.IsHeld(3));
    guard.Answered(true, "c", now + 60s);
    EXPECT_EQ(Asked(), 3U);
}

TEST_F(SleepGuardTest, WhatWasRefusedIsAskedForAgainLater) {
    const auto later = now + LockKeeper::patience;
    guard.Answered(true, "a", now);
    guard.Refused(2);
    guard.Answered(true, "a", later - 1ns);
    EXPECT_EQ(Asked(), 2U);
    guard.Answered(true, "a", later);
    EXPECT_EQ(Asked(), 3U);

    // The delaying one has nobody to ask for it but the guard itself.
    Office other;
    SleepGuard idle(other);
    EXPECT_EQ(idle.Due(), std::nullopt);
    other.isReachable = false;
    idle.Begin(now);
    EXPECT_EQ(idle.Due(), later);
    other.isReachable = true;
    idle.Look(later);
    EXPECT_EQ(idle.Due(), std::nullopt);
    idle.Refused(1);
    EXPECT_EQ(idle.Due(), later + LockKeeper::patience);
    idle.Look(later + LockKeeper::patience);
    EXPECT_EQ(other.asked.size(), 3U);
    idle.Granted(2, other.Lock(2));
    EXPECT_EQ(idle.Due(), std::nullopt);
}

TEST_F(SleepGuardTest, AnAnnouncementIsAcknowledgedByLettingTheDelayGo) {
    guard.Answered(true, "a", now);
    Grant(2);
    guard.PreparationBegan();
    EXPECT_TRUE(office.IsHeld(1));
    guard.Acknowledge();
    EXPECT_FALSE(office.IsHeld(1));
    // The manager grants nothing in between, so nothing is asked for; what blocks may still go.
    guard.Answered(true, "b", now + 60s);
    guard.Look(now + 60s);
    EXPECT_EQ(guard.Due(), std::nullopt);
    EXPECT_EQ(Asked(), 2U);
    EXPECT_TRUE(office.IsHeld(2));
    guard.Answered(false, "", now + 60s);
    EXPECT_FALSE(office.IsHeld(2));
    guard.PreparationEnded(now + 61s);
    EXPECT_EQ(office.asked.at(2), office.asked.at(0));
    Grant(3);
    EXPECT_TRUE(office.IsHeld(3));
}

TEST_F(SleepGuardTest, WithoutAManagerNothingIsAskedFor) {
    guard.End();
    guard.Answered(true, "a", now);
    guard.Look(now + 60s);
    EXPECT_EQ(Asked(), 1U);
    EXPECT_EQ(guard.Due(), std::nullopt);
    // A new one knows nothing of the former's locks.
    guard.Begin(now + 60s);
    EXPECT_EQ(office.asked.at(1), office.asked.at(0));
}

TEST(InhibitorLockTest, NoChildInheritsIt) {
    const int original = open("/dev/null", O_RDONLY);
    const InhibitorLock lock = InhibitorLock::CopyOf(original);
    EXPECT_TRUE(lock.IsHeld());
    EXPECT_EQ(fcntl(original + 1, F_GETFD), FD_CLOEXEC);
    close(original);
    EXPECT_FALSE(InhibitorLock::CopyOf(original).IsHeld());
}

TEST(QuestionTimesTest, TheQuestionIsAskedAfterChangesAndAllTheTimeWhileSomethingRuns) {
    QuestionTimes times;
    const Moment start{1000s};
    // Nothing runs and nothing changes: nobody is woken.
    EXPECT_EQ(times.Due(), std::nullopt);
    EXPECT_FALSE(times.IsTime(start));
    times.Changed();
    EXPECT_TRUE(times.IsTime(start));

    times.Asked(start, true);
    EXPECT_FALSE(times.IsTime(start));
    EXPECT_EQ(times.Due(), start + QuestionTimes::period);
    EXPECT_TRUE(times.IsTime(start + 1s));
    // A flood of changes is asked for now and then.
    times.Changed();
    times.Changed();
    EXPECT_EQ(times.Due(), start + QuestionTimes::leastGap);
    EXPECT_FALSE(times.IsTime(start + QuestionTimes::leastGap - 1ns));
    EXPECT_TRUE(times.IsTime(start + QuestionTimes::leastGap));

    times.Asked(start + 1s, false);
    EXPECT_EQ(times.Due(), std::nullopt);
}

} // namespace
} // namespace kqu::platform

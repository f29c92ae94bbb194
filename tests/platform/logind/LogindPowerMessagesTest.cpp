#include "platform/logind/LogindPowerMessages.h"

#include "tests/support/BusDaemon.h"
#include "tests/support/FakeLoginManager.h"
#include "tests/support/SourcePump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::BusDaemon;
using testing_support::FakeLoginManager;
using testing_support::RunCommand;
using testing_support::SourcePump;

constexpr std::uint32_t mayItSleep = 0xE0000270;

class LogindPowerMessagesTest : public testing::Test {
  protected:
    LogindPowerMessagesTest() {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        manager = std::make_unique<FakeLoginManager>(bus.Address());
    }
    ~LogindPowerMessagesTest() override { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    void Listen() {
        listening = power.Listen(
            [this](std::int32_t message) {
                const auto value = static_cast<std::uint32_t>(message);
                if (value == mayItSleep)
                    return ++questions, objects;
                heard.push_back(value);
                locksWhenHeard = manager ? Count("delay") : 0;
                return false;
            },
            [this] { return running; });
    }
    void Object(const std::string& why) {
        objects = true;
        running = why;
        power.AnswerMayHaveChanged();
    }
    void StopObjecting() {
        objects = false;
        running.clear();
        power.AnswerMayHaveChanged();
    }

    std::ptrdiff_t Count(const std::string& mode) {
        const auto locks = manager->Locks();
        return std::count_if(locks.begin(), locks.end(), [&](const std::string& lock) {
            return lock.starts_with(mode + " sleep:shutdown KQU Messenger ");
        });
    }
    SourcePump Pump() {
        std::vector<EventSource*> sources{&power};
        if (manager)
            sources.push_back(manager.get());
        return SourcePump(sources);
    }
    bool Until(const std::function<bool()>& condition) { return Pump().Until(condition, 10s); }
    bool UntilLocks(std::ptrdiff_t delay, std::ptrdiff_t block) {
        return Until([=, this] { return Count("delay") == delay && Count("block") == block; });
    }
    /// With nothing on its way any more.
    std::ptrdiff_t DescriptorsAtRest() {
        Pump().For(50ms);
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }
    bool UntilHeard(std::uint32_t message) {
        return Until([=, this] { return !heard.empty() && heard.back() == message; });
    }

    BusDaemon bus;
    std::unique_ptr<FakeLoginManager> manager;
    LogindPowerMessages power{100ms};
    Registration listening;
    bool objects = false;
    std::string running;
    int questions = 0;
    std::vector<std::uint32_t> heard;
    std::ptrdiff_t locksWhenHeard = -1;
};

TEST_F(LogindPowerMessagesTest, TheBlockIsHeldFromTheObjectionToItsEnd) {
    // Before somebody listens the bus is left alone.
    Pump().For(100ms);
    EXPECT_EQ(manager->requests, 0);
    Listen();
    EXPECT_EQ(questions, 0);
    ASSERT_TRUE(UntilLocks(1, 0));
    Object("Scanning Da\tta \xFF" + std::string(400, 'x'));
    ASSERT_TRUE(UntilLocks(1, 1));
    // Whatever the tools are called, the text is one that the bus takes.
    const std::string lock = manager->Locks().back();
    EXPECT_NE(lock.find("Scanning Da ta \xEF\xBF\xBDxxx"), std::string::npos) << lock;
    EXPECT_LT(lock.size(), 300U);
    StopObjecting();
    ASSERT_TRUE(UntilLocks(1, 0));
    Object("Scanning");
    ASSERT_TRUE(UntilLocks(1, 1));
    listening.Drop();
    EXPECT_TRUE(UntilLocks(0, 0));
}

TEST_F(LogindPowerMessagesTest, WhileSomethingRunsAChangeIsNoticedWithoutBeingTold) {
    Listen();
    Object("Scanning");
    ASSERT_TRUE(UntilLocks(1, 1));
    const int requests = manager->requests;
    const int before = questions;
    Pump().For(1700ms);
    EXPECT_GE(questions - before, 2);
    EXPECT_EQ(manager->requests, requests);
    // The machine was unplugged.
    objects = false;
    ASSERT_TRUE(UntilLocks(1, 0));
    // With nothing left that runs, nobody is woken any more.
    StopObjecting();
    const int last = questions;
    ASSERT_TRUE(Until([&] { return questions > last; }));
    EXPECT_EQ(power.Due(), std::nullopt);
}

TEST_F(LogindPowerMessagesTest, SleepIsAnnouncedUnderTheDelayAndItsEndIsTold) {
    Listen();
    Object("Scanning");
    ASSERT_TRUE(UntilLocks(1, 1));
    manager->Announce("PrepareForSleep", true);
    ASSERT_TRUE(UntilHeard(0xE0000280));
    EXPECT_EQ(locksWhenHeard, 1);
    EXPECT_TRUE(UntilLocks(0, 1));
    manager->Announce("PrepareForSleep", false);
    ASSERT_TRUE(UntilHeard(0xE0000300));
    EXPECT_TRUE(UntilLocks(1, 1));
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(LogindPowerMessagesTest, AShutdownIsAnnouncedOnceByItsKind) {
    struct Case {
        std::string scheduled;
        std::string told;
        FakeLoginManager::Manners manners;
        std::uint32_t message;
    };
    using enum FakeLoginManager::Manners;
    Listen();
    for (const Case& c : {Case{"", "", Prompt, 0xE0000250},
                          {"poweroff", "", Prompt, 0xE0000250},
                          {"reboot", "", Prompt, 0xE0000310},
                          {"", "reboot", Prompt, 0xE0000310},
                          {"", "halt", Prompt, 0xE0000250},
                          {"reboot", "poweroff", Prompt, 0xE0000250},
                          // One that doesn't say is not waited for.
                          {"reboot", "", Hung, 0xE0000250}}) {
        ASSERT_TRUE(UntilLocks(1, 0)) << c.scheduled << " " << c.told;
        heard.clear();
        manager->scheduledKind = c.scheduled;
        manager->manners = c.manners;
        if (!c.told.empty())
            manager->AnnounceKind(true, c.told);
        manager->Announce("PrepareForShutdown", true);
        ASSERT_TRUE(UntilHeard(c.message)) << c.scheduled << " " << c.told;
        EXPECT_EQ(locksWhenHeard, 1);
        ASSERT_TRUE(UntilLocks(0, 0));
        manager->manners = Prompt;
        // It was called off.
        if (!c.told.empty())
            manager->AnnounceKind(false, c.told);
        manager->Announce("PrepareForShutdown", false);
        ASSERT_TRUE(UntilLocks(1, 0));
        EXPECT_EQ(heard.size(), 1U);
    }
}

TEST_F(LogindPowerMessagesTest, AHungManagerHoldsNothingUp) {
    manager->manners = FakeLoginManager::Manners::Hung;
    Listen();
    Object("Scanning");
    ASSERT_TRUE(Until([this] { return manager->requests == 2; }));
    StopObjecting();
    const int before = questions;
    ASSERT_TRUE(Until([&] { return questions > before; }));
    const auto descriptors = DescriptorsAtRest();
    manager->Answer();
    ASSERT_TRUE(UntilLocks(1, 0));
    // The lock that is held and the end that the stand-in watches.
    EXPECT_EQ(DescriptorsAtRest(), descriptors + 2);
}

TEST_F(LogindPowerMessagesTest, OnlyTheManagerIsHeard) {
    Listen();
    ASSERT_TRUE(UntilLocks(1, 0));
    EXPECT_EQ(RunCommand("dbus-send --bus=" + bus.Address() +
                         " --type=signal /org/freedesktop/login1 "
                         "org.freedesktop.login1.Manager.PrepareForSleep boolean:true"),
              0);
    Pump().For(300ms);
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(Count("delay"), 1);
}

TEST_F(LogindPowerMessagesTest, AManagerOrABusThatComesBackIsAskedForAllLocksAgain) {
    manager.reset();
    bus.Stop();
    Listen();
    Object("Scanning");
    Pump().For(300ms);
    EXPECT_EQ(questions, 0);
    std::ptrdiff_t descriptors = 0;
    for (int round = 0; round < 4; ++round) {
        manager.reset();
        if (round % 2 == 0) {
            bus.Stop();
            Pump().For(50ms);
            bus.Run();
        }
        manager = std::make_unique<FakeLoginManager>(bus.Address());
        ASSERT_TRUE(UntilLocks(1, 1)) << round;
        const auto now = DescriptorsAtRest();
        EXPECT_EQ(now, round == 0 ? now : descriptors);
        descriptors = now;
    }
    EXPECT_TRUE(heard.empty());
}

} // namespace
} // namespace kqu::platform

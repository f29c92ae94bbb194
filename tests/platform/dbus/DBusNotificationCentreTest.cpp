#include "platform/dbus/DBusNotificationCentre.h"

#include "framework/events/EventLoop.h"
#include "framework/events/LoopTimer.h"
#include "platform/loop/SystemWaiting.h"
#include "tests/support/BusDaemon.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::BusDaemon;
using testing_support::RunCommand;

const std::string interfaceName = "com.brackwater.DistributedNotifications";
const std::string path = "/com/brackwater/DistributedNotifications";

class DBusNotificationCentreTest : public testing::Test {
  protected:
    DBusNotificationCentreTest() {
        setenv("DBUS_SESSION_BUS_ADDRESS", session.Address().c_str(), 1);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", system.Address().c_str(), 1);
        for (EventSource* source : centre.Sources())
            watched.push_back(loop.Watch(*source));
        listening =
            centre.Listen([this](const PostedNotification& posted) { received.push_back(posted); });
        // The match is in place once a post of our own comes back.
        AwaitPost("session", [this] { return !received.empty(); });
        received.clear();
    }

    void AwaitPost(const std::string& bus, const std::function<bool()>& condition) {
        for (int i = 0; i < 100 && !condition(); ++i) {
            Send(bus, "string:ready string:x dict:string:string:a,b");
            Await(condition, 100ms);
        }
        ASSERT_TRUE(condition());
    }
    bool Await(const std::function<bool()>& condition, std::chrono::milliseconds patience = 5s) {
        const auto deadline = loop.Now() + patience;
        LoopTimer look(loop, [] {});
        look.Start(5ms, LoopTimer::Repeat::Always);
        while (!condition() && loop.Now() < deadline)
            loop.RunOnce();
        return condition();
    }
    bool AwaitCount(std::size_t count) {
        return Await([&] { return received.size() >= count; });
    }
    int Send(const std::string& bus, const std::string& arguments, const std::string& as = "") {
        return RunCommand(as + "dbus-send --" + bus + " --type=signal " + path + " " +
                          interfaceName + ".Posted " + arguments);
    }

    BusDaemon session;
    BusDaemon system;
    SystemWaiting waiting;
    EventLoop loop{waiting};
    DBusNotificationCentre centre;
    std::vector<Registration> watched;
    Registration listening;
    std::vector<PostedNotification> received;
};

std::string TextOf(const WireValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : "(no text)";
}

TEST_F(DBusNotificationCentreTest, StockClientsAreHeardOnce) {
    const auto second = centre.Listen([](const PostedNotification&) {});
    EXPECT_EQ(Send("session", "string:KQS_disk.1 string:KQMS dict:string:string:PID,4711,Item,a"),
              0);
    EXPECT_EQ(RunCommand("gdbus emit --session --object-path " + path + " --signal " +
                         interfaceName +
                         ".Posted \"'KQS_disk.2'\" \"'KQBackup'\" \"{'Progress': <'5'>}\""),
              0);
    EXPECT_EQ(RunCommand("busctl --address=" + session.Address() + " emit " + path + " " +
                         interfaceName + " Posted 'ssa{sv}' KQS_disk.3 KQDefrag 1 BSD s sda1"),
              0);
    ASSERT_TRUE(AwaitCount(3));
    Await([] { return false; }, 100ms);
    ASSERT_EQ(received.size(), 3U);
    EXPECT_EQ(received[0].name, "KQS_disk.1");
    EXPECT_EQ(TextOf(*received[0].object), "KQMS");
    EXPECT_EQ((*received[0].userInfo)[1].first, "Item");
    EXPECT_EQ(TextOf((*received[1].userInfo)[0].second), "5");
    EXPECT_EQ(TextOf((*received[2].userInfo)[0].second), "sda1");
}

TEST_F(DBusNotificationCentreTest, WhateverComesIsTakenForWhatItIs) {
    const auto emit = [&](const std::string& arguments) {
        return RunCommand("busctl --address=" + session.Address() + " emit " + path + " " +
                          interfaceName + " Posted " + arguments);
    };
    EXPECT_EQ(emit(""), 0);
    EXPECT_EQ(emit("i 5"), 0);
    EXPECT_EQ(emit("sd name 2.5"), 0);
    EXPECT_EQ(emit("sba{sv} name true 0"), 0);
    EXPECT_EQ(emit("sos name /a x"), 0);
    EXPECT_EQ(emit("ssas name object 1 x"), 0);
    EXPECT_EQ(emit("ssa{si} name object 1 x 5"), 0);
    EXPECT_EQ(emit("ssa{sv}s name object 6 y y 7 t 8 b false v v s deep x d 1.5 l as 1 z more"), 0);
    ASSERT_TRUE(AwaitCount(8));
    EXPECT_FALSE(received[0].name || received[0].object || received[0].userInfo);
    EXPECT_FALSE(received[1].name);
    EXPECT_EQ(std::get<double>(*received[2].object), 2.5);
    EXPECT_FALSE(received[2].userInfo);
    EXPECT_TRUE(std::get<bool>(*received[3].object));
    EXPECT_TRUE(received[3].userInfo && received[3].userInfo->empty());
    EXPECT_TRUE(std::holds_alternative<OtherWireValue>(*received[4].object));
    EXPECT_FALSE(received[4].userInfo || received[5].userInfo || received[6].userInfo);
    ASSERT_TRUE(received[7].userInfo);
    const WireDictionary& values = *received[7].userInfo;
    ASSERT_EQ(values.size(), 6U);
    EXPECT_EQ(std::get<double>(values[0].second), 7);
    EXPECT_EQ(std::get<double>(values[1].second), 8);
    EXPECT_FALSE(std::get<bool>(values[2].second));
    EXPECT_EQ(TextOf(values[3].second), "deep");
    EXPECT_EQ(std::get<double>(values[4].second), 1.5);
    EXPECT_TRUE(std::holds_alternative<OtherWireValue>(values[5].second));
}

TEST_F(DBusNotificationCentreTest, OnTheSystemBusOnlyRootAndTheOwnUserAreHeard) {
    const std::string post = "string:KQS_disk.1 string:KQMS dict:string:string:Item,";
    // A stock client leaves at once; one that stays long enough to be asked about is heard.
    const auto stay = [&](const std::string& as, const std::string& item) {
        return RunCommand(as +
                          "/usr/bin/python3 " KQU_SOURCE_DIR "/tests/support/post_and_stay.py " +
                          system.Address() + " KQS_disk.1 KQMS Item=" + item + " Item2=x &");
    };
    EXPECT_EQ(stay("", "own"), 0);
    ASSERT_TRUE(AwaitCount(1));
    if (getuid() == 0) {
        EXPECT_EQ(stay("setpriv --reuid=65534 --regid=65534 --clear-groups ", "stranger"), 0);
        Await([] { return false; }, 1500ms);
    }
    EXPECT_EQ(stay("", "own again"), 0);
    ASSERT_TRUE(AwaitCount(2));
    for (const PostedNotification& posted : received)
        EXPECT_NE(TextOf((*posted.userInfo)[0].second), "stranger");
}

TEST_F(DBusNotificationCentreTest, ABusThatGoesAwayIsFoundAgainAndTheOtherGoesOn) {
    system.Stop();
    Await([] { return false; }, 200ms);
    EXPECT_EQ(Send("session", "string:still string:x dict:string:string:a,b"), 0);
    ASSERT_TRUE(AwaitCount(1));
    session.Stop();
    Await([] { return false; }, 200ms);
    session.Start();
    received.clear();
    AwaitPost("session", [this] { return !received.empty(); });
}

TEST_F(DBusNotificationCentreTest, HugeAndManyValuesComeWhole) {
    const std::string script = "/usr/bin/python3 " KQU_SOURCE_DIR
                               "/tests/support/post_and_stay.py " +
                               session.Address() + " KQS_disk.1 KQMS ";
    EXPECT_EQ(RunCommand(script + "--repeat-text=33554432"), 0);
    EXPECT_EQ(RunCommand(script + "--many-keys=20000"), 0);
    ASSERT_TRUE(AwaitCount(2));
    EXPECT_EQ(TextOf((*received[0].userInfo)[0].second).size(), 33554432U);
    EXPECT_EQ(received[1].userInfo->size(), 20000U);
}

} // namespace
} // namespace kqu::platform

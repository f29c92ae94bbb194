#include "platform/dbus/DBusNotificationCentre.h"

#include "platform/dbus/BusConnection.h"
#include "tests/support/BusDaemon.h"
#include "tests/support/BusPoster.h"
#include "tests/support/SourcePump.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::BusDaemon;
using testing_support::BusPoster;
using testing_support::OtherProcess;
using testing_support::RunCommand;
using testing_support::SourcePump;

constexpr unsigned stranger = 65534;

/// The real centre on private buses; the system bus has the stock policy.
class DBusNotificationCentreTest : public testing::Test {
  protected:
    DBusNotificationCentreTest() {
        setenv("DBUS_SESSION_BUS_ADDRESS", session.Address().c_str(), 1);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", system.Address().c_str(), 1);
    }

    void Listen() {
        listening = centre.Listen([this](const PostedNotification& posted) {
            heard.push_back(posted.name.value_or("(none)"));
            latest = posted;
        });
    }
    /// Waits until the centre has asked the bus for what is posted. The name of its connection.
    std::string AwaitListening(BusPoster& poster) {
        EXPECT_TRUE(pump.Until([&] { return poster.Listeners().size() == 1; }));
        const auto listeners = poster.Listeners();
        return listeners.empty() ? "" : listeners.front().first;
    }
    bool Await(std::size_t count) {
        return pump.Until([&] { return heard.size() >= count; });
    }
    [[nodiscard]] std::string Value(std::size_t index) const {
        return latest.userInfo ? std::get<std::string>(latest.userInfo->at(index).second) : "-";
    }

    BusDaemon session{BusDaemon::Kind::Session, BusDaemon::Start::Later};
    BusDaemon system{BusDaemon::Kind::System, BusDaemon::Start::Later};
    DBusNotificationCentre centre{100ms};
    SourcePump pump{centre.Sources()};
    std::vector<std::string> heard;
    PostedNotification latest;
    Registration listening;
};

TEST_F(DBusNotificationCentreTest, StockClientsAreHeardEachOnce) {
    session.Run();
    Listen();
    int second = 0;
    const auto another = centre.Listen([&](const PostedNotification&) { ++second; });
    BusPoster poster(session.Address());
    AwaitListening(poster);

    const std::string path = " /com/brackwater/DistributedNotifications ";
    const std::string interface = "com.brackwater.DistributedNotifications";
    const std::string commands[] = {
        "dbus-send --session --type=signal" + path + interface +
            ".Posted string:KQS_disk.1 string:KQMS "
            "dict:string:string:PID,4711,Progress,250,VolName,Data,ScanType,0,Item,/srv/data/a.bin",
        "gdbus emit --session --object-path" + path + "--signal " + interface +
            ".Posted \"'KQS_disk.2'\" \"'KQMS'\" \"{'PID': <'4711'>}\"",
        "busctl --address=" + session.Address() + " emit" + path + interface +
            " Posted ssa{sv} KQS_disk.3 KQMS 1 PID s 4711",
    };
    for (const std::string& command : commands) {
        ASSERT_EQ(RunCommand(command), 0) << command;
        ASSERT_TRUE(Await(heard.size() + 1)) << command;
        EXPECT_EQ(std::get<std::string>(*latest.object), "KQMS");
        EXPECT_EQ(latest.userInfo->at(0).first, "PID");
        EXPECT_EQ(Value(0), "4711");
    }
    pump.For(200ms);
    EXPECT_EQ(heard, (std::vector<std::string>{"KQS_disk.1", "KQS_disk.2", "KQS_disk.3"}));
    EXPECT_EQ(second, 3);
}

TEST_F(DBusNotificationCentreTest, OnlyTheInterfaceAndTheMemberCount) {
    session.Run();
    Listen();
    BusPoster poster(session.Address());
    const std::string connection = AwaitListening(poster);

    poster.Send("com.brackwater.DistributedNotifications", "posted");
    poster.Send("com.brackwater.DistributedNotifications2", "Posted");
    poster.PostRaw([](sd_bus_message*) { return 0; });
    poster.PostRaw([](sd_bus_message* m) { return sd_bus_message_append(m, "s", "to one"); },
                   connection);
    poster.Post("last", "", {});
    ASSERT_TRUE(Await(3));
    EXPECT_EQ(heard, (std::vector<std::string>{"(none)", "to one", "last"}));
}

TEST_F(DBusNotificationCentreTest, OnTheSystemBusRootAndTheOwnUserAreHeardInOrder) {
    system.Run();
    Listen();
    BusPoster poster(system.Address());
    AwaitListening(poster);

    std::vector<std::string> expected;
    for (int number = 0; number < 100; ++number)
        expected.push_back("KQS_disk." + std::to_string(number));
    poster.Flood(100);
    ASSERT_TRUE(Await(100));
    if (getuid() == 0) {
        OtherProcess other(system.Address(), stranger, [](BusPoster& bus) { bus.Flood(50); });
        other.AwaitDone();
        pump.For(300ms);
    }
    poster.Post("after", "KQMS", {});
    expected.emplace_back("after");
    ASSERT_TRUE(Await(expected.size()));
    EXPECT_EQ(heard, expected);
}

TEST_F(DBusNotificationCentreTest, ASenderThatLeavesIsForgottenOrNotHeard) {
    system.Run();
    Listen();
    BusPoster poster(system.Address());
    AwaitListening(poster);
    const auto rules = [&] { return poster.Listeners().at(0).second; };
    ASSERT_EQ(rules(), 1) << "nobody's coming and going wakes the process";
    {
        BusPoster tool(system.Address());
        tool.Post("stays", "KQMS", {});
        ASSERT_TRUE(Await(1));
        EXPECT_EQ(rules(), 2);
    }
    EXPECT_TRUE(pump.Until([&] { return rules() == 1; }));
    // Gone before we even look.
    BusPoster(system.Address()).Post("flees", "KQMS", {});
    poster.Post("poster", "KQMS", {});
    EXPECT_TRUE(pump.Until([&] { return heard.size() == 2 && rules() == 2; }));
    EXPECT_EQ(heard, (std::vector<std::string>{"stays", "poster"}));
}

TEST_F(DBusNotificationCentreTest, TrustDoesNotOutliveTheBus) {
    // Each bus gives out the same names in the same order; ours is the first both times.
    const auto isConnected = [this] { return centre.Sources()[1]->Watch().fd >= 0; };
    system.Run();
    Listen();
    pump.For(200ms);
    {
        BusPoster poster(system.Address());
        AwaitListening(poster);
        EXPECT_EQ(poster.UniqueName(), ":1.1");
        poster.Post("before", "KQMS", {});
        ASSERT_TRUE(Await(1));
        system.Stop();
        ASSERT_TRUE(pump.Until([&] { return !isConnected(); }));
        system.Run();
        ASSERT_TRUE(pump.Until(isConnected));
        pump.For(200ms);
    }
    if (getuid() == 0) {
        OtherProcess other(system.Address(), stranger, [](BusPoster& bus) { bus.Flood(5); });
        EXPECT_EQ(other.AwaitDone(), ":1.1");
        pump.For(300ms);
    }
    BusPoster poster(system.Address());
    AwaitListening(poster);
    poster.Post("after", "KQMS", {});
    ASSERT_TRUE(Await(2));
    EXPECT_EQ(heard, (std::vector<std::string>{"before", "after"}));
}

TEST_F(DBusNotificationCentreTest, ABusIsFoundWhenItComesAndTheOtherGoesOn) {
    Listen();
    pump.For(300ms);
    EXPECT_LT(pump.rounds, 20U) << "nothing spins while both are absent";
    session.Run();
    {
        BusPoster poster(session.Address());
        AwaitListening(poster);
        poster.Post("session came", "", {});
        ASSERT_TRUE(Await(1));
    }
    system.Run();
    BusPoster onSystem(system.Address());
    AwaitListening(onSystem);
    for (const std::string round : {"1", "2"}) {
        session.Stop();
        onSystem.Post("system goes on " + round, "", {});
        ASSERT_TRUE(Await(heard.size() + 1));
        session.Run();
        BusPoster poster(session.Address());
        AwaitListening(poster);
        poster.Post("session again " + round, "", {});
        ASSERT_TRUE(Await(heard.size() + 1));
    }
    EXPECT_EQ(heard,
              (std::vector<std::string>{"session came", "system goes on 1", "session again 1",
                                        "system goes on 2", "session again 2"}));
}

TEST_F(DBusNotificationCentreTest, ABusThatNeverAnswersHoldsNobody) {
    system.Run();
    const int deaf = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{AF_UNIX, {}};
    session.Socket().string().copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* plain = reinterpret_cast<const sockaddr*>(&address);
    ASSERT_EQ(bind(deaf, plain, sizeof address), 0);
    ASSERT_EQ(listen(deaf, 1), 0);
    Listen();
    BusPoster poster(system.Address());
    AwaitListening(poster);
    poster.Post("heard", "", {});
    EXPECT_TRUE(Await(1));
    close(deaf);
}

TEST_F(DBusNotificationCentreTest, AConnectionThatIsIdleSleepsAndIsNotInherited) {
    session.Run();
    EXPECT_EQ(centre.Sources()[0]->Watch().fd, -1) << "the first listener connects";
    EXPECT_FALSE(centre.Sources()[0]->Due());
    Listen();
    BusPoster poster(session.Address());
    AwaitListening(poster);
    pump.For(100ms);
    const EventSource& source = *centre.Sources()[0];
    EXPECT_EQ(source.Watch().events, POLLIN);
    EXPECT_FALSE(source.Due());
    EXPECT_TRUE((fcntl(source.Watch().fd, F_GETFD) & FD_CLOEXEC) != 0);
}

TEST_F(DBusNotificationCentreTest, AFloodIsTakenInPiecesAndNothingIsLost) {
    constexpr int count = 50000;
    session.Run();
    system.Run();
    Listen();
    BusPoster poster(system.Address());
    AwaitListening(poster);
    {
        BusPoster onSession(session.Address());
        AwaitListening(onSession);
    }
    OtherProcess other(session.Address(), OtherProcess::sameUser,
                       [](BusPoster& bus) { bus.Flood(count); });
    ASSERT_TRUE(Await(1000));
    poster.Post("in between", "", {});
    ASSERT_TRUE(Await(count + 1));
    const auto between = std::find(heard.begin(), heard.end(), "in between");
    EXPECT_LT(between - heard.begin(), count) << "the other bus need not wait for the flood's end";
    heard.erase(between);
    for (int number = 0; number < count; ++number)
        ASSERT_EQ(heard[static_cast<std::size_t>(number)], "KQS_disk." + std::to_string(number));
    EXPECT_LE(pump.largestBatch, std::size_t{BusConnection::messagesPerCollect});
}

TEST_F(DBusNotificationCentreTest, TheGreatestMessageComesWhole) {
    session.Run();
    Listen();
    BusPoster poster(session.Address());
    AwaitListening(poster);
    poster.Post("large", "KQMS", {{"Item", std::string(32U << 20, 'x')}});
    ASSERT_TRUE(Await(1));
    EXPECT_EQ(Value(0).size(), std::size_t{32U << 20});
}

TEST_F(DBusNotificationCentreTest, AListenerMayPumpAndMayGoWhileItIsTold) {
    session.Run();
    Registration first;
    Registration second;
    int secondHeard = 0;
    std::string order;
    first = centre.Listen([&](const PostedNotification& posted) {
        order += *posted.name;
        if (order != "a")
            return;
        pump.Until([&] { return order.size() == 2; });
        second.Drop();
        first.Drop();
        order += ".";
    });
    second = centre.Listen([&](const PostedNotification&) { ++secondHeard; });
    BusPoster poster(session.Address());
    AwaitListening(poster);
    poster.Post("a", "", {});
    poster.Post("b", "", {});
    ASSERT_TRUE(pump.Until([&] { return order == "ab."; })) << order;
    EXPECT_EQ(secondHeard, 1) << "it heard b, nested, and was gone when it would have heard a";
    poster.Post("c", "", {});
    pump.For(100ms);
    EXPECT_EQ(order, "ab.");
}

TEST_F(DBusNotificationCentreTest, WhoCallsUsIsAnswered) {
    session.Run();
    Listen();
    BusPoster poster(session.Address());
    const std::string connection = AwaitListening(poster);
    OtherProcess caller(session.Address(), OtherProcess::sameUser, [&](BusPoster& bus) {
        sd_bus_error error{};
        sd_bus_call_method(bus.Get(), connection.c_str(), "/", "a.b", "C", &error, nullptr, "");
        bus.Post(error.name, "", {});
        sd_bus_error_free(&error);
    });
    ASSERT_TRUE(Await(1));
    EXPECT_EQ(heard[0], SD_BUS_ERROR_UNKNOWN_OBJECT);
}

} // namespace
} // namespace kqu::platform

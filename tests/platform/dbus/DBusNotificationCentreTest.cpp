#include "platform/dbus/DBusNotificationCentre.h"

#include "platform/dbus/BusConnection.h"
#include "platform/dbus/Listeners.h"
#include "platform/dbus/WireDecoder.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/SourcePump.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::PrivateBus;
using testing_support::SourcePump;
using Names = std::vector<std::string>;

/// A connection that posts.
struct Poster {
    explicit Poster(const PrivateBus& bus) : connection(bus.Connect()) {}

    void Post(const std::string& name, const char* interface = postedInterface,
              const char* member = postedMember) const {
        sd_bus_emit_signal(connection.get(), "/a", interface, member, "ss", name.c_str(), "KQMS");
        EXPECT_GE(sd_bus_flush(connection.get()), 0);
    }
    [[nodiscard]] std::string Name() const {
        const char* name = nullptr;
        return sd_bus_get_unique_name(connection.get(), &name) < 0 ? "" : name;
    }

    PrivateBus::Connection connection;
};

class DBusNotificationCentreTest : public testing::Test {
  protected:
    DBusNotificationCentreTest() {
        setenv("DBUS_SESSION_BUS_ADDRESS", session.Address().c_str(), 1);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", system.Address().c_str(), 1);
    }

    void Listen() {
        listening = centre.Listen([this](const auto& posted) { heard.push_back(*posted.name); });
    }
    bool IsConnected(std::size_t bus) { return centre.Sources()[bus]->Watch().fd >= 0; }
    bool Await(const std::string& name) {
        return pump.Until([&] { return !heard.empty() && heard.back() == name; });
    }
    /// Waits until what is posted there is heard.
    void AwaitListening(const Poster& poster) {
        const Names before = heard;
        pump.Until([&] {
            poster.Post("heard by now?");
            return heard.size() > before.size();
        });
        poster.Post("the last of these");
        EXPECT_TRUE(Await("the last of these"));
        heard = before;
    }

    PrivateBus session;
    PrivateBus system;
    DBusNotificationCentre centre{100ms};
    SourcePump pump{centre.Sources()};
    Names heard;
    Registration listening;
};

TEST_F(DBusNotificationCentreTest, AFloodIsHeardWholeInOrderAndInPieces) {
    constexpr int count = 20000;
    session.Run();
    system.Run();
    Listen();
    const Poster onSession(session);
    const Poster onSystem(system);
    AwaitListening(onSession);
    AwaitListening(onSystem);
    Names expected;
    for (int number = 0; number < count; ++number) {
        expected.push_back(std::to_string(number));
        onSession.Post(expected.back());
    }
    onSession.Post("other member", postedInterface, "posted");
    onSession.Post("other interface", "com.brackwater.DistributedNotifications2");
    onSession.Post("end");
    expected.emplace_back("end");
    onSystem.Post("in between");
    ASSERT_TRUE(Await("end"));
    const auto between = std::find(heard.begin(), heard.end(), "in between");
    ASSERT_LT(between - heard.begin(), count) << "the other bus need not wait for the flood's end";
    heard.erase(between);
    EXPECT_TRUE(heard == expected);
    EXPECT_LE(pump.largestBatch, std::size_t{BusConnection::messagesPerCollect});
}

TEST_F(DBusNotificationCentreTest, EachBusIsFoundWheneverItComesAndTrustDoesNotOutliveIt) {
    EXPECT_FALSE(IsConnected(0)) << "the first listener connects";
    Listen();
    pump.For(300ms);
    EXPECT_LT(pump.rounds, 20U) << "nothing spins while both are absent";
    session.Run();
    for (const std::string round : {"first", "second"}) {
        // Each bus gives out the same names in the same order; ours is the first both times.
        system.Run();
        ASSERT_TRUE(pump.Until([&] { return IsConnected(1); }));
        pump.For(200ms);
        std::optional<Poster> stranger;
        if (getuid() == 0 && round == "second") {
            // Whoever connects is known to the bus by the user at that time.
            EXPECT_EQ(seteuid(65534), 0);
            stranger.emplace(system);
            EXPECT_EQ(stranger->Name(), ":1.1");
            EXPECT_EQ(seteuid(0), 0);
            stranger->Post("from a stranger");
        }
        const Poster poster(system);
        EXPECT_EQ(poster.Name(), stranger ? ":1.2" : ":1.1");
        poster.Post(round);
        ASSERT_TRUE(Await(round));
        session.Stop();
        poster.Post(round + " alone");
        ASSERT_TRUE(Await(round + " alone"));
        session.Run();
        AwaitListening(Poster(session));
        system.Stop();
        ASSERT_TRUE(pump.Until([&] { return !IsConnected(1); }));
    }
    EXPECT_EQ(heard, (Names{"first", "first alone", "second", "second alone"}));
    EXPECT_FALSE(centre.Sources()[0]->Due()) << "a connection that is idle sleeps";
}

TEST_F(DBusNotificationCentreTest, ABusThatNeverAnswersHoldsNobody) {
    system.Run();
    const int deaf = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{AF_UNIX, {}};
    session.Socket().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(deaf, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(deaf, 1), 0);
    Listen();
    AwaitListening(Poster(system));
    close(deaf);
}

TEST(ListenersTest, AListenerMayPumpAndMayGoWhileItIsTold) {
    const auto listeners = std::make_shared<Listeners>();
    Registration first, second;
    Names told;
    first = listeners->Add([&](const PostedNotification& posted) {
        told.push_back("first " + *posted.name);
        if (*posted.name == "a") {
            listeners->Deliver({"b", {}, {}});
            second.Drop();
            first.Drop();
        }
    });
    second = listeners->Add([&](const auto& posted) { told.push_back("second " + *posted.name); });
    for (const char* name : {"a", "c"})
        listeners->Deliver({name, {}, {}});
    // The second heard b, nested, and was gone when it would have heard a.
    EXPECT_EQ(told, (Names{"first a", "first b", "second b"}));
}

} // namespace
} // namespace kqu::platform

#include "platform/dbus/DBusNotifications.h"

#include "platform/dbus/WireDecoder.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/SourcePump.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
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

    void Post(const std::string& name) const {
        sd_bus_emit_signal(connection.get(), "/a", postedInterface, postedMember, "ss",
                           name.c_str(), "KQMS");
        EXPECT_GE(sd_bus_flush(connection.get()), 0);
    }
    /// Who owns the program's name at this moment; empty if nobody does.
    [[nodiscard]] std::string Owner() const {
        sd_bus_message* reply = nullptr;
        const char* owner = "";
        sd_bus_call_method(connection.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                           "GetNameOwner", nullptr, &reply, "s", "com.brackwater.KQU_Messenger");
        const CPointer<sd_bus_message, sd_bus_message_unref> owned(reply);
        return reply != nullptr && sd_bus_message_read(reply, "s", &owner) > 0 ? owner : "";
    }
    [[nodiscard]] std::string Name() const {
        const char* name = nullptr;
        return sd_bus_get_unique_name(connection.get(), &name) < 0 ? "" : name;
    }

    PrivateBus::Connection connection;
};

class DBusNotificationsTest : public testing::Test {
  protected:
    DBusNotificationsTest() {
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
    DBusNotifications centre{100ms};
    SourcePump pump{centre.Sources()};
    Names heard;
    Registration listening;
};

TEST_F(DBusNotificationsTest, EachBusIsFoundWheneverItComesAndTrustDoesNotOutliveIt) {
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

/// A bus that takes connections and never says a word.
class DeafBus {
  public:
    explicit DeafBus(const PrivateBus& place) {
        sockaddr_un address{AF_UNIX, {}};
        place.Socket().copy(address.sun_path, sizeof address.sun_path - 1);
        if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(socket_, 1) != 0)
            throw std::runtime_error("no socket");
    }
    ~DeafBus() { close(socket_); }

  private:
    int socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

TEST_F(DBusNotificationsTest, TheNameWaitsForASystemBusThatHangsButNotForLong) {
    session.Run();
    const DeafBus deaf(system);
    const Poster poster(session);
    Listen();
    pump.For(1500ms);
    EXPECT_EQ(poster.Owner(), "");
    EXPECT_LT(pump.rounds, 60U) << "nothing spins meanwhile";
    EXPECT_TRUE(pump.Until([&] { return !poster.Owner().empty(); }, 5s));
    EXPECT_FALSE(centre.Sources()[2]->Due());
}

} // namespace
} // namespace kqu::platform

#include "platform/logind/LogindPowerMessages.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/SourcePump.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::PrivateBus;
using testing_support::SourcePump;

constexpr std::uint32_t mayItSleep = 0xE0000270;
constexpr const char* path = "/org/freedesktop/login1";
constexpr const char* interface = "org.freedesktop.login1.Manager";

/// A login manager as far as locks and announcements go, in the same loop as the one who uses it.
class StandIn final : public EventSource {
  public:
    explicit StandIn(const PrivateBus& bus) : bus_(bus.Connect()) {
        const auto answer = [](sd_bus_message* call, void* self, sd_bus_error*) {
            return static_cast<StandIn*>(self)->Answer(call);
        };
        EXPECT_GE(sd_bus_add_object(bus_.get(), nullptr, path, answer, this), 0);
        EXPECT_GE(sd_bus_request_name(bus_.get(), "org.freedesktop.login1", 0), 0);
    }
    ~StandIn() override {
        for (const auto& [description, watched] : locks_)
            close(watched);
    }

    /// The locks that are held now: "mode what who why".
    std::vector<std::string> Locks() {
        std::vector<std::string> held;
        for (const auto& [description, watched] : locks_) {
            pollfd end{watched, 0, 0};
            if (poll(&end, 1, 0) == 0)
                held.push_back(description);
        }
        return held;
    }
    void Announce(const char* signal, bool begins) {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), path, interface, signal, "b", begins ? 1 : 0), 0);
    }
    /// A shutdown, as those managers do that tell its kind, unless there is none.
    void AnnounceShutdown(bool begins, const std::string& kind) {
        if (!kind.empty())
            sd_bus_emit_signal(bus_.get(), path, interface, "PrepareForShutdownWithMetadata",
                               "ba{sv}", begins ? 1 : 0, 2, "other", "u", 7U, "type", "s",
                               kind.c_str());
        Announce("PrepareForShutdown", begins);
    }
    [[nodiscard]] pollfd Watch() const override {
        return {sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0};
    }
    bool Collect(EventQueue&) override {
        while (sd_bus_process(bus_.get(), nullptr) > 0)
            ;
        return false;
    }

    /// What was scheduled; without one the property does not exist, and "?" is never answered.
    std::string scheduled;

  private:
    int Answer(sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, interface, "Inhibit") > 0)
            return Grant(call);
        if (scheduled == "?")
            return 1;
        if (scheduled.empty())
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "None");
        return sd_bus_reply_method_return(call, "v", "(st)", scheduled.c_str(), std::uint64_t{1});
    }
    int Grant(sd_bus_message* call) {
        const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        EXPECT_GE(sd_bus_message_read(call, "ssss", &what, &who, &why, &mode), 0);
        locks_.emplace_back(std::string(mode) + " " + what + " " + who + " " + why, ends[0]);
        const int result = sd_bus_reply_method_return(call, "h", ends[1]);
        close(ends[1]);
        return result;
    }

    PrivateBus::Connection bus_;
    std::vector<std::pair<std::string, int>> locks_;
};

class LogindPowerMessagesTest : public testing::Test {
  protected:
    LogindPowerMessagesTest() {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        bus.Run();
        manager.emplace(bus);
    }
    ~LogindPowerMessagesTest() override { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    void Listen(const std::string& why = "") {
        running = why;
        listening = power.Listen(
            [this](std::int32_t message) {
                const auto value = static_cast<std::uint32_t>(message);
                if (value == mayItSleep)
                    return !running.empty();
                heard.push_back(value);
                locksWhenHeard = Locks();
                return false;
            },
            [this] { return running; });
    }
    /// The modes of the program's locks.
    std::string Locks() {
        std::string modes;
        for (const std::string& lock : manager->Locks())
            if (lock.find(" sleep:shutdown KQU Messenger ") != std::string::npos)
                modes += lock.substr(0, 5) + " ";
        return modes;
    }
    bool Until(const std::function<bool()>& condition) {
        return SourcePump({&power, &*manager}).Until(condition);
    }
    bool UntilLocks(const std::string& modes) {
        return Until([&] { return Locks() == modes; });
    }
    bool UntilHeard(std::uint32_t message) {
        return Until([&] { return !heard.empty() && heard.back() == message; });
    }

    PrivateBus bus;
    std::optional<StandIn> manager;
    LogindPowerMessages power{100ms};
    Registration listening;
    std::string running;
    std::vector<std::uint32_t> heard;
    std::string locksWhenHeard;
};

TEST_F(LogindPowerMessagesTest, LocksAreAskedForAnewOfEachManagerAndEndWithTheListening) {
    Listen("Scanning Da\tta \xFF" + std::string(400, 'x'));
    ASSERT_TRUE(UntilLocks("delay block "));
    for (const bool busGoesToo : {true, false}) {
        manager.reset();
        if (busGoesToo) {
            bus.Stop();
            SourcePump({&power}).For(50ms);
            bus.Run();
        }
        manager.emplace(bus);
        ASSERT_TRUE(UntilLocks("delay block ")) << busGoesToo;
    }
    // Whatever the tools are called, the text is one that the bus takes.
    const std::string lock = manager->Locks().back();
    EXPECT_NE(lock.find("Scanning Da ta \xEF\xBF\xBDxxx"), std::string::npos) << lock;
    EXPECT_LT(lock.size(), 300U);
    // While something runs, a change is noticed without being told.
    running.clear();
    EXPECT_TRUE(UntilLocks("delay "));
    EXPECT_TRUE(Until([this] { return !power.Due(); })) << "nobody is woken any more";
    listening.Drop();
    EXPECT_TRUE(UntilLocks(""));
}

TEST_F(LogindPowerMessagesTest, SleepIsAnnouncedUnderTheDelayByTheManagerAlone) {
    Listen("Scanning");
    ASSERT_TRUE(UntilLocks("delay block "));
    const auto stranger = bus.Connect();
    EXPECT_GE(sd_bus_emit_signal(stranger.get(), path, interface, "PrepareForSleep", "b", 0), 0);
    sd_bus_flush(stranger.get());
    SourcePump({&power, &*manager}).For(100ms);
    manager->Announce("PrepareForSleep", true);
    ASSERT_TRUE(UntilHeard(0xE0000280));
    EXPECT_EQ(locksWhenHeard, "delay block ");
    EXPECT_TRUE(UntilLocks("block "));
    manager->Announce("PrepareForSleep", false);
    ASSERT_TRUE(UntilHeard(0xE0000300));
    EXPECT_TRUE(UntilLocks("block delay "));
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(LogindPowerMessagesTest, AShutdownIsAnnouncedOnceByItsKind) {
    constexpr std::uint32_t off = 0xE0000250, restart = 0xE0000310;
    const std::tuple<const char*, const char*, std::uint32_t> cases[] = {
        {"", "", off},
        {"poweroff", "", off},
        {"reboot", "", restart},
        {"", "reboot", restart},
        {"", "halt", off},
        {"reboot", "poweroff", off},
        // One that doesn't say is not waited for.
        {"?", "", off}};
    Listen();
    for (const auto& [scheduled, told, message] : cases) {
        ASSERT_TRUE(UntilLocks("delay ")) << scheduled << " " << told;
        heard.clear();
        manager->scheduled = scheduled;
        for (const bool begins : {true, false}) {
            manager->AnnounceShutdown(begins, told);
            ASSERT_TRUE(UntilHeard(message)) << scheduled << " " << told;
            ASSERT_TRUE(UntilLocks(begins ? "" : "delay "));
        }
        EXPECT_EQ(locksWhenHeard, "delay ");
        EXPECT_EQ(heard.size(), 1U);
    }
}

} // namespace
} // namespace kqu::platform

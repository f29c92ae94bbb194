#include "platform/logind/LogindPowerMessages.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/SourcePump.h"

#include <gtest/gtest.h>

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
struct StandIn final : EventSource {
    explicit StandIn(const PrivateBus& on) : bus(on.Connect()) {
        const auto answer = [](sd_bus_message* call, void* self, sd_bus_error*) {
            return static_cast<StandIn*>(self)->Answer(call);
        };
        EXPECT_GE(sd_bus_add_object(bus.get(), nullptr, path, answer, this), 0);
        EXPECT_GE(sd_bus_request_name(bus.get(), "org.freedesktop.login1", 0), 0);
    }
    ~StandIn() override {
        for (const auto& [description, watched] : locks)
            close(watched);
    }
    int Answer(sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, interface, "Inhibit") > 0)
            return refusals-- > 0
                       ? sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "No")
                       : Grant(call);
        if (scheduled == "?")
            return 1;
        if (scheduled.empty())
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "None");
        return sd_bus_reply_method_return(call, "v", "(st)", scheduled.c_str(), std::uint64_t{1});
    }
    int Grant(sd_bus_message* call) {
        const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        EXPECT_GE(sd_bus_message_read(call, "ssss", &what, &who, &why, &mode), 0);
        locks.emplace_back(std::string(mode) + " " + why, ends[0]);
        const int result = sd_bus_reply_method_return(call, "h", ends[1]);
        close(ends[1]);
        return result;
    }
    /// The modes of the locks that are held now.
    std::string Held() const {
        std::string modes;
        for (const auto& [description, watched] : locks) {
            pollfd end{watched, 0, 0};
            modes += poll(&end, 1, 0) == 0 ? description.substr(0, 6) : "";
        }
        return modes;
    }
    void Announce(const char* signal, bool begins) const {
        EXPECT_GE(sd_bus_emit_signal(bus.get(), path, interface, signal, "b", begins ? 1 : 0), 0);
    }
    /// A shutdown; those managers that tell its kind do that before.
    void AnnounceShutdown(bool begins, const char* kind) const {
        if (*kind != '\0')
            sd_bus_emit_signal(bus.get(), path, interface, "PrepareForShutdownWithMetadata",
                               "ba{sv}", begins ? 1 : 0, 2, "other", "u", 7U, "type", "s", kind);
        Announce("PrepareForShutdown", begins);
    }
    [[nodiscard]] pollfd Watch() const override {
        return {sd_bus_get_fd(bus.get()), static_cast<short>(sd_bus_get_events(bus.get())), 0};
    }
    bool Collect(EventQueue&) override { return sd_bus_process(bus.get(), nullptr) > 0; }

    PrivateBus::Connection bus;
    std::vector<std::pair<std::string, int>> locks;
    int refusals = 0;
    /// What was scheduled; without one the property does not exist, and "?" is never answered.
    std::string scheduled;
};

struct LogindPowerMessagesTest : testing::Test {
    LogindPowerMessagesTest() {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        bus.Run();
        manager.emplace(bus);
    }
    void Listen(const std::string& why = "") {
        running = why;
        listening = power.Listen(
            [this](std::int32_t message) {
                const auto value = static_cast<std::uint32_t>(message);
                if (value == mayItSleep)
                    return !running.empty();
                heard.push_back(value);
                heldWhenHeard = manager->Held();
                return false;
            },
            [this] { return running; });
    }
    bool Until(const std::function<bool()>& condition) {
        return SourcePump({&power, &*manager}).Until(condition);
    }
    bool UntilHeld(const std::string& modes) {
        return Until([&] { return manager->Held() == modes; });
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
    std::string heldWhenHeard;
};

TEST_F(LogindPowerMessagesTest, SleepIsAnnouncedUnderTheDelayByTheManagerAlone) {
    // Whatever the tools are called, the text is one that the bus takes.
    Listen("Scanning Da\tta \xFF" + std::string(400, 'x'));
    ASSERT_TRUE(UntilHeld("delay block "));
    const std::string reason = manager->locks.back().first;
    EXPECT_TRUE(reason.starts_with("block Scanning Da ta \xEF\xBF\xBDxxx")) << reason;
    EXPECT_LT(reason.size(), 300U);
    const auto stranger = bus.Connect();
    EXPECT_GE(sd_bus_emit_signal(stranger.get(), path, interface, "PrepareForSleep", "b", 0), 0);
    sd_bus_flush(stranger.get());
    SourcePump({&power, &*manager}).For(100ms);
    manager->Announce("PrepareForSleep", true);
    ASSERT_TRUE(UntilHeard(0xE0000280));
    EXPECT_EQ(heldWhenHeard, "delay block ");
    EXPECT_TRUE(UntilHeld("block "));
    manager->Announce("PrepareForSleep", false);
    ASSERT_TRUE(UntilHeard(0xE0000300));
    EXPECT_TRUE(UntilHeld("block delay "));
    EXPECT_EQ(heard.size(), 2U);
    listening.Drop();
    EXPECT_TRUE(UntilHeld(""));
}

TEST_F(LogindPowerMessagesTest, ALockThatIsRefusedIsAskedForAgain) {
    manager->refusals = 1;
    Listen();
    EXPECT_TRUE(Until([this] { return manager->refusals == 0; }));
    EXPECT_TRUE(UntilHeld("delay "));
}

TEST_F(LogindPowerMessagesTest, AShutdownIsAnnouncedOnceByItsKind) {
    constexpr std::uint32_t off = 0xE0000250, restart = 0xE0000310;
    // What was scheduled, and what the manager tells of it. One that doesn't say is not waited for.
    const std::tuple<const char*, const char*, std::uint32_t> cases[] = {
        {"", "", off},           {"poweroff", "", off}, {"reboot", "", restart},
        {"", "reboot", restart}, {"", "halt", off},     {"reboot", "poweroff", off},
        {"?", "", off}};
    Listen();
    for (const auto& [scheduled, told, message] : cases) {
        ASSERT_TRUE(UntilHeld("delay ")) << scheduled << " " << told;
        heard.clear();
        manager->scheduled = scheduled;
        for (const bool begins : {true, false}) {
            manager->AnnounceShutdown(begins, told);
            ASSERT_TRUE(UntilHeard(message)) << scheduled << " " << told;
            ASSERT_TRUE(UntilHeld(begins ? "" : "delay "));
        }
        EXPECT_EQ(heldWhenHeard, "delay ");
        EXPECT_EQ(heard.size(), 1U);
    }
}

} // namespace
} // namespace kqu::platform

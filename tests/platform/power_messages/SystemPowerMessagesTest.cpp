#include "platform/power_messages/SystemPowerMessages.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/SourcePump.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <unistd.h>

namespace kqu::platform {
namespace {

using namespace std::chrono_literals;
using testing_support::PrivateBus;
using testing_support::SourcePump;

constexpr const char* managerPath = "/org/freedesktop/login1";
constexpr const char* manager = "org.freedesktop.login1.Manager";
constexpr std::uint32_t willSleep = 0xE0000280, hasPoweredOn = 0xE0000300;

/// The login manager, the session manager and the power manager as far as requests to stay awake
/// go, in the same loop as the one who uses them.
struct Services final : EventSource {
    explicit Services(const PrivateBus& on) : bus(on.Connect()) {
        const auto answer = [](sd_bus_message* call, void* self, sd_bus_error*) {
            return static_cast<Services*>(self)->Take(call);
        };
        for (const char* path :
             {managerPath, "/org/gnome/SessionManager", "/org/freedesktop/PowerManagement/Inhibit"})
            EXPECT_GE(sd_bus_add_object(bus.get(), nullptr, path, answer, this), 0);
        for (const char* name : {"org.freedesktop.login1", "org.gnome.SessionManager",
                                 "org.freedesktop.PowerManagement"})
            EXPECT_GE(sd_bus_request_name(bus.get(), name, 0), 0);
    }
    ~Services() override {
        for (const auto& [end, lock] : locks)
            close(end);
    }
    int Take(sd_bus_message* call) {
        calls++;
        if (isSlow)
            waiting.emplace_back(sd_bus_message_ref(call));
        return isSlow ? 1 : Answer(call);
    }
    void AnswerAll() {
        isSlow = false;
        for (const auto& call : std::exchange(waiting, {}))
            Answer(call.get());
    }
    int Answer(sd_bus_message* call) {
        const char *first = nullptr, *second = nullptr, *why = nullptr, *mode = nullptr;
        std::uint32_t window = 0, flags = 0, cookie = ++lastCookie;
        const std::string member = sd_bus_message_get_member(call);
        if (member == "Uninhibit" || member == "UnInhibit") {
            EXPECT_GE(sd_bus_message_read(call, "u", &cookie), 0);
            EXPECT_EQ(cookies.erase(cookie), 1U);
            return 1;
        }
        if (isRefusing)
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "No");
        if (sd_bus_message_is_method_call(call, manager, "Inhibit") > 0) {
            EXPECT_GE(sd_bus_message_read(call, "ssss", &first, &second, &why, &mode), 0);
            reason = why;
            int ends[2];
            EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
            locks.emplace_back(ends[0], std::string(mode) + " " + first);
            sd_bus_reply_method_return(call, "h", ends[1]);
            return close(ends[1]);
        }
        if (sd_bus_message_is_method_call(call, "org.gnome.SessionManager", "Inhibit") > 0) {
            EXPECT_GE(sd_bus_message_read(call, "susu", &first, &window, &why, &flags), 0);
            cookies[cookie] = "session " + std::to_string(flags);
        } else {
            EXPECT_GE(sd_bus_message_read(call, "ss", &first, &why), 0);
            cookies[cookie] = "power";
        }
        return sd_bus_reply_method_return(call, "u", cookie);
    }
    /// What is held now, in the order of the alphabet.
    std::string Held() const {
        std::vector<std::string> held;
        for (const auto& [end, lock] : locks)
            if (pollfd watched{end, 0, 0}; poll(&watched, 1, 0) == 0)
                held.push_back(lock);
        for (const auto& [cookie, what] : cookies)
            held.push_back(what);
        std::sort(held.begin(), held.end());
        std::string text;
        for (const std::string& one : held)
            text += one + "; ";
        return text;
    }
    [[nodiscard]] pollfd Watch() const override {
        return {sd_bus_get_fd(bus.get()), static_cast<short>(sd_bus_get_events(bus.get())), 0};
    }
    bool Collect(EventQueue&) override { return sd_bus_process(bus.get(), nullptr) > 0; }

    PrivateBus::Connection bus;
    std::vector<std::pair<int, std::string>> locks;
    std::map<std::uint32_t, std::string> cookies;
    std::vector<BusMessage> waiting;
    std::string reason;
    std::uint32_t lastCookie = 0;
    int calls = 0;
    bool isSlow = false;
    bool isRefusing = false;
};

struct SystemPowerMessagesTest : testing::Test {
    SystemPowerMessagesTest() {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
        bus.Run();
        services.emplace(bus);
        listening = power.Listen(
            [this](std::int32_t message) {
                heard.push_back(static_cast<std::uint32_t>(message));
                return !running.empty();
            },
            [this] { return running; });
    }
    ~SystemPowerMessagesTest() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }
    void Run(const std::string& what) {
        running = what;
        power.AnswerMayHaveChanged();
    }
    bool Until(const std::function<bool()>& condition) {
        std::vector<EventSource*> sources = power.Sources();
        sources.push_back(&*services);
        return SourcePump(sources).Until(condition);
    }
    bool UntilHeld(const std::string& what) {
        return Until([&] { return services->Held() == what; });
    }
    bool UntilCalls(int number) {
        return Until([&] { return services->calls >= number; });
    }
    bool UntilHeard(std::uint32_t message) {
        return Until([&] { return std::count(heard.begin(), heard.end(), message) > 0; });
    }

    PrivateBus bus;
    std::optional<Services> services;
    SystemPowerMessages power{100ms};
    Registration listening;
    std::string running;
    std::vector<std::uint32_t> heard;
    const std::string all = "block shutdown; block sleep; power; session 5; ";
};

TEST_F(SystemPowerMessagesTest, EachServiceIsAskedWithATextThatTheBusTakes) {
    Run("Scanning Da\tta \xFF" + std::string(400, 'x'));
    ASSERT_TRUE(UntilHeld(all));
    EXPECT_TRUE(services->reason.starts_with("Scanning Da ta \xEF\xBF\xBDxxx"));
    EXPECT_LT(services->reason.size(), 300U);
    // Services that are there anew, and no request that nobody wants.
    services.emplace(bus);
    ASSERT_TRUE(UntilHeld(all));
    EXPECT_EQ(services->calls, 4);
    listening.Drop();
    EXPECT_TRUE(UntilHeld(""));
}

TEST_F(SystemPowerMessagesTest, AnotherReasonIsPassedOnAfterAPause) {
    const auto began = std::chrono::steady_clock::now();
    Run("a");
    ASSERT_TRUE(UntilHeld(all));
    Run("b");
    ASSERT_TRUE(UntilCalls(8));
    EXPECT_GE(std::chrono::steady_clock::now() - began, Inhibitor::pause);
    EXPECT_TRUE(Until([this] { return services->reason == "b"; }));
}

TEST_F(SystemPowerMessagesTest, AnAnswerThatComesTooLateIsGivenBackAtOnce) {
    services->isSlow = true;
    Run("a");
    ASSERT_TRUE(UntilCalls(4));
    Run("");
    heard.clear();
    ASSERT_TRUE(UntilHeard(canSystemSleep));
    services->AnswerAll();
    // The two cookies come back as calls.
    ASSERT_TRUE(UntilCalls(6));
    EXPECT_TRUE(UntilHeld(""));
    Run("b");
    EXPECT_TRUE(UntilHeld(all));
}

TEST_F(SystemPowerMessagesTest, WhatWasRefusedDuringASleepIsAskedForAsSoonAsItIsOver) {
    services->isRefusing = true;
    Run("a");
    // Refused three times, each service is left alone for four seconds.
    ASSERT_TRUE(UntilCalls(12));
    const auto refused = std::chrono::steady_clock::now();
    services->isRefusing = false;
    const auto stranger = bus.Connect();
    for (sd_bus* from : {stranger.get(), services->bus.get()}) {
        EXPECT_GE(sd_bus_emit_signal(from, managerPath, manager, "PrepareForSleep", "b", 1), 0);
        EXPECT_GE(sd_bus_emit_signal(from, managerPath, manager, "PrepareForSleep", "b", 0), 0);
        sd_bus_flush(from);
    }
    ASSERT_TRUE(UntilHeld("block shutdown; block sleep; "));
    EXPECT_LT(std::chrono::steady_clock::now() - refused, 4 * Inhibitor::pause);
    EXPECT_TRUE(UntilHeard(hasPoweredOn));
    EXPECT_EQ(std::count(heard.begin(), heard.end(), willSleep), 1);
}

TEST_F(SystemPowerMessagesTest, AShutdownIsAnnouncedOnceByItsKind) {
    constexpr std::uint32_t off = 0xE0000250, restart = 0xE0000310;
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"", off}, {"reboot", restart}, {"halt", off}, {"soft-reboot", restart}};
    Run("a");
    ASSERT_TRUE(UntilHeld(all));
    for (const auto& [kind, message] : cases) {
        heard.clear();
        for (const int begins : {1, 0}) {
            // Those managers that say the kind do that before.
            if (*kind != '\0')
                sd_bus_emit_signal(services->bus.get(), managerPath, manager,
                                   "PrepareForShutdownWithMetadata", "ba{sv}", begins, 2, "other",
                                   "u", 7U, "type", "s", kind);
            sd_bus_emit_signal(services->bus.get(), managerPath, manager, "PrepareForShutdown", "b",
                               begins);
        }
        sd_bus_emit_signal(services->bus.get(), managerPath, manager, "PrepareForSleep", "b", 0);
        ASSERT_TRUE(UntilHeard(hasPoweredOn));
        EXPECT_EQ(std::count(heard.begin(), heard.end(), message), 1) << kind;
        EXPECT_EQ(std::count(heard.begin(), heard.end(), off + restart - message), 0) << kind;
    }
}

} // namespace
} // namespace kqu::platform

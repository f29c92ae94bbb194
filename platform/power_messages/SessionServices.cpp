#include "platform/dbus/BusAddress.h"
#include "platform/power_messages/InhibitingServices.h"

namespace kqu::platform {

namespace {
constexpr BusObject sessionManager{"org.gnome.SessionManager", "/org/gnome/SessionManager",
                                   "org.gnome.SessionManager"};
constexpr BusObject powerManager{"org.freedesktop.PowerManagement",
                                 "/org/freedesktop/PowerManagement/Inhibit",
                                 "org.freedesktop.PowerManagement.Inhibit"};

/// The grant is a number, which is given back to whom it came from by a method of that name.
auto ReadCookie(const BusObject& service, const char* giveBack) {
    return [service, giveBack](sd_bus_message& answer,
                               BusConnection& connection) -> std::optional<Registration> {
        std::uint32_t cookie = 0;
        if (sd_bus_message_read_basic(&answer, SD_BUS_TYPE_UINT32, &cookie) <= 0)
            return std::nullopt;
        return Registration([&connection, service, giveBack, cookie,
                             owner = std::string(SenderOf(answer))] {
            const BusMessage call =
                connection.CallOf({owner.c_str(), service.path, service.interface}, giveBack);
            if (call && sd_bus_message_append_basic(call.get(), SD_BUS_TYPE_UINT32, &cookie) >= 0)
                connection.Notify(call);
        });
    };
}

int WriteForSessionManager(sd_bus_message& call, const char* why) {
    // Logging out is how its users restart and power off.
    constexpr std::uint32_t logOut = 1;
    constexpr std::uint32_t suspend = 4;
    constexpr std::uint32_t noWindow = 0;
    return sd_bus_message_append(&call, "susu", ownBusName, noWindow, why, logOut | suspend);
}

int WriteForPowerManager(sd_bus_message& call, const char* why) {
    return sd_bus_message_append(&call, "ss", "KQU Messenger", why);
}
} // namespace

InhibitingServices SessionServices(std::chrono::milliseconds retryAfter) {
    return {SessionBusAddress,
            retryAfter,
            {sessionManager, WriteForSessionManager, ReadCookie(sessionManager, "Uninhibit")},
            {powerManager, WriteForPowerManager, ReadCookie(powerManager, "UnInhibit")}};
}

} // namespace kqu::platform

#include "post/posting/SeatUser.h"

#include <cstdint>
#include <string>

namespace kqu::post {

namespace {
constexpr const char* loginManager = "org.freedesktop.login1";
constexpr const char* seat = "seat0";

using Object = Questions::Object;

std::string TextOf(Questions& bus, const Object& session, const char* property) {
    const char* text = "";
    std::string copy;
    bus.Read(session, property, "s", [&](sd_bus_message& value) {
        const bool isRead = sd_bus_message_read_basic(&value, 's', &text) > 0;
        copy = isRead ? text : "";
        return isRead;
    });
    return copy;
}

/// The path of the session that the seat belongs to at present; empty where there is none.
std::string ActiveSession(Questions& bus) {
    const MessagePointer found =
        bus.Call({loginManager, "/org/freedesktop/login1", "org.freedesktop.login1.Manager"},
                 "GetSeat", "s", seat);
    const char* path = nullptr;
    if (!found || sd_bus_message_read_basic(found.get(), 'o', &path) <= 0)
        return "";
    std::string session;
    bus.Read({loginManager, path, "org.freedesktop.login1.Seat"}, "ActiveSession", "(so)",
             [&](sd_bus_message& value) {
                 const char* id = "";
                 const char* place = "";
                 if (sd_bus_message_read(&value, "(so)", &id, &place) > 0 && *id != '\0')
                     session = place;
                 return true;
             });
    return session;
}
} // namespace

std::optional<uid_t> UserAtSeat(Questions& bus) {
    if (!bus.HasOwner(loginManager))
        return std::nullopt;
    const Object session{loginManager, ActiveSession(bus), "org.freedesktop.login1.Session"};
    // The session's type is not asked for: one that was begun with startx counts as a terminal's,
    // and whether there is a display the user's own service manager knows.
    if (session.path.empty() || TextOf(bus, session, "Class") != "user" ||
        TextOf(bus, session, "State") != "active")
        return std::nullopt;
    std::optional<uid_t> user;
    bus.Read(session, "User", "(uo)", [&](sd_bus_message& value) {
        std::uint32_t number = 0;
        const char* path = nullptr;
        if (sd_bus_message_read(&value, "(uo)", &number, &path) > 0)
            user = number;
        return true;
    });
    return user;
}

} // namespace kqu::post

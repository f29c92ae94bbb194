#include "post/posting/DesktopNotification.h"

#include "post/posting/Questions.h"
#include "post/posting/SeatUser.h"
#include "post/posting/UserCommand.h"

#include <chrono>
#include <cstdint>
#include <unistd.h>

namespace kqu::post {

namespace {
constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";
constexpr const char* types = "susssasa{sv}i";
constexpr const char* sender = "kqu-run";
constexpr const char* icon = "kqu-messenger";
constexpr std::chrono::seconds most{2};

bool ShowInOwnSession(const std::string& title, const std::string& text, bool isUrgent) {
    constexpr std::uint32_t replacesNone = 0;
    constexpr std::int32_t defaultTime = -1;
    try {
        const Connection connection = Connect(Bus::Session, most);
        Questions bus(*connection.bus, std::chrono::steady_clock::now() + most);
        return bus.Call({service, object, service}, "Notify", types, sender, replacesNone, icon,
                        title.c_str(), text.c_str(), 0, 1, "urgency", "y", isUrgent ? 2 : 1,
                        defaultTime) != nullptr;
    } catch (const PostError&) {
        return false;
    }
}
} // namespace

void ShowNotification(const std::string& title, const std::string& text, bool isUrgent) {
    if (ShowInOwnSession(title, text, isUrgent) || geteuid() != 0)
        return;
    if (const auto session = SessionAtSeat())
        static_cast<void>(RunAs(session->user,
                                {"/usr/bin/busctl",
                                 "--user",
                                 "--",
                                 "call",
                                 service,
                                 object,
                                 service,
                                 "Notify",
                                 types,
                                 sender,
                                 "0",
                                 icon,
                                 title,
                                 text,
                                 "0",
                                 "1",
                                 "urgency",
                                 "y",
                                 isUrgent ? "2" : "1",
                                 "-1"},
                                most));
}

} // namespace kqu::post

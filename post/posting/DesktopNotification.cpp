#include "post/posting/DesktopNotification.h"

#include "post/posting/Connection.h"
#include "post/posting/Text.h"
#include "post/posting/UserCommand.h"

#include <cstdint>
#include <unistd.h>

namespace kqu::post {

namespace {
constexpr std::chrono::seconds most{2};

bool ShowInOwnSession(const std::string& title, const std::string& text, bool isUrgent) {
    constexpr const char* service = "org.freedesktop.Notifications";
    try {
        const Connection connection = Connect(Bus::Session, most);
        Questions bus(*connection.bus, std::chrono::steady_clock::now() + most);
        return bus.Call({service, "/org/freedesktop/Notifications", service}, "Notify",
                        "susssasa{sv}i", "kqu-run", std::uint32_t{0}, "kqu-messenger",
                        title.c_str(), text.c_str(), 0, 1, "urgency", "y", isUrgent ? 2 : 1,
                        std::int32_t{-1}) != nullptr;
    } catch (const PostError&) {
        return false;
    }
}
} // namespace

void ShowNotification(const std::string& title, const std::string& text, bool isUrgent) {
    if (ShowInOwnSession(title, text, isUrgent) || geteuid() != 0)
        return;
    const auto words = Words("/usr/bin/busctl --user -- call org.freedesktop.Notifications "
                             "/org/freedesktop/Notifications org.freedesktop.Notifications Notify "
                             "susssasa{sv}i kqu-run 0 kqu-messenger");
    std::vector<std::string> command(words.begin(), words.end());
    command.insert(command.end(),
                   {title, text, "0", "1", "urgency", "y", isUrgent ? "2" : "1", "-1"});
    if (const auto session = SessionAtSeat())
        static_cast<void>(RunAs(session->user, command, most));
}

} // namespace kqu::post

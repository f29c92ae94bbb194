#include "post/posting/DesktopNotification.h"

#include "post/posting/Questions.h"

#include <chrono>
#include <cstdint>

namespace kqu::post {

void ShowNotification(const std::string& title, const std::string& text, bool isUrgent) {
    constexpr const char* service = "org.freedesktop.Notifications";
    constexpr std::uint32_t replacesNone = 0;
    constexpr std::int32_t defaultTime = -1;
    try {
        const Connection connection = Connect(Bus::Session);
        Questions bus(*connection.bus, std::chrono::steady_clock::now() + std::chrono::seconds(2));
        static_cast<void>(bus.Call({service, "/org/freedesktop/Notifications", service}, "Notify",
                                   "susssasa{sv}i", "kqu-run", replacesNone, "kqu-messenger",
                                   title.c_str(), text.c_str(), 0, 1, "urgency", "y",
                                   isUrgent ? 2 : 1, defaultTime));
    } catch (const PostError&) {
        return;
    }
}

} // namespace kqu::post

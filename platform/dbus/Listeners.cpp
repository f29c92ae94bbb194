#include "platform/dbus/Listeners.h"

#include <utility>

namespace kqu::platform {

Registration Listeners::Add(NotificationCentre::Listener listener) {
    const auto entry = std::make_shared<Entry>(Entry{std::move(listener)});
    entries_.push_back(entry);
    return Registration([listeners = shared_from_this(), entry] {
        entry->isRegistered = false;
        std::erase(listeners->entries_, entry);
    });
}

void Listeners::Deliver(const PostedNotification& posted) const {
    const auto entries = entries_;
    for (const auto& entry : entries)
        if (entry->isRegistered)
            entry->listener(posted);
}

} // namespace kqu::platform

#include "platform/dbus/DBusNotifications.h"

#include "platform/dbus/BusAddress.h"

#include <utility>

namespace kqu::platform {

DBusNotifications::DBusNotifications(std::chrono::milliseconds retryAfter)
    : listener_(std::make_shared<Listener>()),
      session_(HeardSenders::All, SessionBusAddress, retryAfter, listener_),
      system_(HeardSenders::RootAndOwn, SystemBusAddress, retryAfter, listener_) {}

Registration DBusNotifications::Listen(Listener listener) {
    *listener_ = std::move(listener);
    session_.Begin();
    system_.Begin();
    return Registration([listener = listener_] { *listener = nullptr; });
}

std::vector<EventSource*> DBusNotifications::Sources() {
    return {&session_.Source(), &system_.Source(), this};
}

std::optional<Moment> DBusNotifications::Due() const {
    const std::optional<Moment> listening = session_.ListeningSince();
    if (!listening || session_.HasAskedForName())
        return std::nullopt;
    return *listening + patience;
}

bool DBusNotifications::Collect(EventQueue& /*queue*/) {
    const std::optional<Moment> due = Due();
    if (due && (system_.IsSettled() || MonotonicNow() >= *due))
        session_.AskForName(ownBusName);
    return false;
}

} // namespace kqu::platform

#include "platform/dbus/DBusNotifications.h"

#include "platform/dbus/BusAddress.h"
#include "platform/dbus/OwnName.h"
#include "platform/dbus/PostedSignals.h"

#include <utility>

namespace kqu::platform {

DBusNotifications::DBusNotifications(std::chrono::milliseconds retryAfter)
    : listener_(std::make_shared<Listener>()),
      session_(std::make_unique<PostedSignals>(HeardSenders::All, SessionBusAddress, retryAfter,
                                               listener_)),
      system_(std::make_unique<PostedSignals>(HeardSenders::RootAndOwn, SystemBusAddress,
                                              retryAfter, listener_)),
      name_(std::make_unique<OwnName>(*session_, *system_)) {}

DBusNotifications::~DBusNotifications() = default;

Registration DBusNotifications::Listen(Listener listener) {
    *listener_ = std::move(listener);
    session_->Begin();
    system_->Begin();
    return Registration([listener = listener_] { *listener = nullptr; });
}

std::vector<EventSource*> DBusNotifications::Sources() {
    return {&session_->Source(), &system_->Source(), name_.get()};
}

} // namespace kqu::platform

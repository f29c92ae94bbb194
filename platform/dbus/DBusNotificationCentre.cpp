#include "platform/dbus/DBusNotificationCentre.h"

#include "platform/dbus/BusAddress.h"
#include "platform/dbus/Listeners.h"
#include "platform/dbus/OwnName.h"
#include "platform/dbus/PostedSignals.h"

#include <utility>

namespace kqu::platform {

DBusNotificationCentre::DBusNotificationCentre(std::chrono::milliseconds retryAfter)
    : listeners_(std::make_shared<Listeners>()),
      session_(std::make_unique<PostedSignals>(HeardSenders::All, SessionBusAddress, retryAfter,
                                               listeners_)),
      system_(std::make_unique<PostedSignals>(HeardSenders::RootAndOwn, SystemBusAddress,
                                              retryAfter, listeners_)),
      name_(std::make_unique<OwnName>(*session_, *system_)) {}

DBusNotificationCentre::~DBusNotificationCentre() = default;

Registration DBusNotificationCentre::Listen(Listener listener) {
    Registration registration = listeners_->Add(std::move(listener));
    session_->Begin();
    system_->Begin();
    return registration;
}

std::vector<EventSource*> DBusNotificationCentre::Sources() {
    return {&session_->Source(), &system_->Source(), name_.get()};
}

} // namespace kqu::platform

#include "platform/dbus/DBusNotificationCentre.h"

#include "platform/dbus/WireDecoder.h"

#include <string>
#include <utility>

namespace kqu::platform {

namespace {
constexpr const char* postedMatch = "type='signal',"
                                    "interface='com.brackwater.DistributedNotifications',"
                                    "member='Posted'";
} // namespace

DBusNotificationCentre::DBusNotificationCentre() = default;

DBusNotificationCentre::~DBusNotificationCentre() = default;

Registration DBusNotificationCentre::Listen(Listener listener) {
    const std::uint64_t number = nextListener_++;
    listeners_.emplace(number, std::move(listener));
    session_.Open();
    system_.Open();
    return Registration([this, number] { listeners_.erase(number); });
}

void DBusNotificationCentre::Tell(const PostedNotification& posted) {
    // A listener may take itself or another one away while it is told.
    const auto listeners = listeners_;
    for (const auto& [number, listener] : listeners)
        if (listeners_.contains(number))
            listener(posted);
}

DBusNotificationCentre::Station::Station(DBusNotificationCentre& centre, Bus which)
    : connection(which, *this),
      centre_(centre),
      which_(which),
      trust_(connection,
             [this](PostedNotification posted) { arrived_.push_back(std::move(posted)); }) {}

void DBusNotificationCentre::Station::Connected(sd_bus* bus) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus, &slot, postedMatch, OnPosted, nullptr, this) >= 0)
        match_.reset(slot);
}

void DBusNotificationCentre::Station::Disconnected() {
    trust_.Clear();
    match_.reset();
}

int DBusNotificationCentre::Station::OnPosted(sd_bus_message* signal, void* userdata,
                                              sd_bus_error*) {
    auto& station = *static_cast<Station*>(userdata);
    try {
        station.Take(signal);
    } catch (...) {
        station.connection.KeepException();
    }
    return 0;
}

void DBusNotificationCentre::Station::Take(sd_bus_message* signal) {
    PostedNotification posted = DecodeNotification(signal);
    const char* sender = sd_bus_message_get_sender(signal);
    if (which_ == Bus::Session)
        arrived_.push_back(std::move(posted));
    else if (sender != nullptr)
        trust_.Take(sender, std::move(posted));
}

void DBusNotificationCentre::Station::Deliver(EventQueue& queue) {
    for (PostedNotification& posted : arrived_)
        queue.Post([this, notification = std::move(posted)] { centre_.Tell(notification); });
    arrived_.clear();
}

} // namespace kqu::platform

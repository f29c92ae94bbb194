#pragma once

#include "platform/dbus/BusConnection.h"
#include "platform/dbus/SenderTrust.h"
#include "platform/interfaces/NotificationCentre.h"

#include <cstdint>
#include <map>
#include <vector>

namespace kqu::platform {

/// The distributed notification centre on D-Bus: every signal `Posted` of the interface
/// `com.brackwater.DistributedNotifications`, from any path, on the session bus and on the system
/// bus. On the system bus, where any user may broadcast, only root and the own user are heard.
class DBusNotificationCentre final : public NotificationCentre {
  public:
    DBusNotificationCentre();
    ~DBusNotificationCentre() override;

    [[nodiscard]] Registration Listen(Listener listener) override;

    /// The connections, to be watched by the event loop.
    [[nodiscard]] std::vector<EventSource*> Sources() { return {&session_, &system_}; }

  private:
    /// The use of one bus.
    class Station final : public BusClient {
      public:
        Station(DBusNotificationCentre& centre, Bus which);
        void Connected(sd_bus* bus) override;
        void Disconnected() override;
        void Deliver(EventQueue& queue) override;
        BusConnection connection;

      private:
        static int OnPosted(sd_bus_message* signal, void* userdata, sd_bus_error* error);
        void Take(sd_bus_message* signal);

        DBusNotificationCentre& centre_;
        Bus which_;
        SenderTrust trust_;
        BusSlot match_;
        std::vector<PostedNotification> arrived_;
    };

    void Tell(const PostedNotification& posted);

    std::map<std::uint64_t, Listener> listeners_;
    std::uint64_t nextListener_ = 0;
    Station sessionStation_{*this, Bus::Session};
    Station systemStation_{*this, Bus::System};
    BusConnection& session_ = sessionStation_.connection;
    BusConnection& system_ = systemStation_.connection;
};

} // namespace kqu::platform

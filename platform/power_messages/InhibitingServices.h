#pragma once

#include "platform/power_messages/Inhibitor.h"

#include <array>

namespace kqu::platform {

/// The two services on one bus that keep the machine awake. Nothing waits for them and nothing
/// starts them.
class InhibitingServices : protected BusConnection::Client {
  public:
    InhibitingServices(BusConnection::FindAddress findAddress, std::chrono::milliseconds retryAfter,
                       const InhibitorService& first, const InhibitorService& second)
        : connection_(findAddress, retryAfter, *this),
          inhibitors_{Inhibitor(connection_, first), Inhibitor(connection_, second)} {}

    [[nodiscard]] BusConnection& Connection() { return connection_; }

    /// From now on the machine is to be kept awake for this reason.
    void Want(const std::string& why) {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Want(why);
    }
    void Forgo() {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Forgo();
    }

  protected:
    void Began() override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Began();
    }
    void Received(sd_bus_message& message, EventQueue& /*queue*/) override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Received(message);
    }
    void Lost() override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Lost();
    }

    BusConnection connection_;
    std::array<Inhibitor, 2> inhibitors_;
};

/// The services of a desktop's session that put the machine to sleep, on the session bus: the
/// session manager of GNOME, MATE, Cinnamon and Budgie, and the power manager of KDE, Xfce and
/// LXQt. They act as the user who sits there, whom a login manager before systemd 257 lets pass the
/// locks of his own programs; they go by lists of their own.
[[nodiscard]] InhibitingServices SessionServices(std::chrono::milliseconds retryAfter);

} // namespace kqu::platform

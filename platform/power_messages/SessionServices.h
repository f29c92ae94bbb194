#pragma once

#include "platform/power_messages/Inhibitor.h"

#include <array>

namespace kqu::platform {

/// The services of a desktop's session that put the machine to sleep, on the session bus. They act
/// as the user who sits there, whom a login manager before systemd 257 lets pass the locks of his
/// own programs; they go by lists of their own.
class SessionServices final : private BusConnection::Client {
  public:
    explicit SessionServices(std::chrono::milliseconds retryAfter);

    [[nodiscard]] BusConnection& Connection() { return connection_; }

    void Want(const std::string& why);
    void Forgo();

  private:
    void Began() override;
    void Received(sd_bus_message& message, EventQueue& queue) override;
    void Lost() override;

    BusConnection connection_;
    /// The session manager of GNOME, MATE, Cinnamon and Budgie, and the power manager of KDE, Xfce
    /// and LXQt.
    std::array<Inhibitor, 2> inhibitors_;
};

} // namespace kqu::platform

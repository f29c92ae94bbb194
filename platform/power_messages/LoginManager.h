#pragma once

#include "platform/power_messages/InhibitingServices.h"

#include <cstdint>
#include <functional>

namespace kqu::platform {

/// systemd's login manager on the system bus, by its D-Bus interface
/// org.freedesktop.login1.Manager: its block locks on sleep and on shutdown, and its announcements
/// as power messages. It is asked for each lock by itself: a request for both at once is judged by
/// polkit under an action that has to do with neither.
class LoginManager final : public InhibitingServices {
  public:
    /// `deliver` is called from the event loop with each power message. It must outlive the loop's
    /// deliveries.
    LoginManager(std::chrono::milliseconds retryAfter,
                 std::function<void(std::uint32_t message)> deliver);

  private:
    void Began() override;
    void Received(sd_bus_message& message, EventQueue& queue) override;
    void Lost() override;

    void TakeSignal(sd_bus_message& message, EventQueue& queue);
    void Ended(bool isSleep, EventQueue& queue);
    void Deliver(std::uint32_t message, EventQueue& queue) const;

    std::function<void(std::uint32_t message)> deliver_;
    /// Set while a shutdown is under way and has been announced.
    bool isShutdownAnnounced_ = false;
};

} // namespace kqu::platform

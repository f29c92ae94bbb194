#pragma once

#include "platform/power_messages/InhibitingServices.h"

namespace kqu::platform {

/// The services of a desktop's session that put the machine to sleep, on the session bus: the
/// session manager of GNOME, MATE, Cinnamon and Budgie, and the power manager of KDE, Xfce and
/// LXQt. They act as the user who sits there, whom a login manager before systemd 257 lets pass the
/// locks of his own programs; they go by lists of their own.
class SessionServices final : public InhibitingServices {
  public:
    explicit SessionServices(std::chrono::milliseconds retryAfter);
};

} // namespace kqu::platform

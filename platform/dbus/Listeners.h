#pragma once

#include "platform/interfaces/NotificationCentre.h"

#include <memory>
#include <vector>

namespace kqu::platform {

/// Those who listen to the notification centre. Shared with the deliveries that wait in the loop's
/// queue and with the registrations, which may all outlive the centre.
class Listeners : public std::enable_shared_from_this<Listeners> {
  public:
    [[nodiscard]] Registration Add(NotificationCentre::Listener listener);

    /// Tells everybody who listens by now. A listener may pump the loop, and may drop its own
    /// registration or another's, who is not told then.
    void Deliver(const PostedNotification& posted) const;

    [[nodiscard]] bool IsEmpty() const { return entries_.empty(); }

  private:
    struct Entry {
        NotificationCentre::Listener listener;
        bool isRegistered = true;
    };

    std::vector<std::shared_ptr<Entry>> entries_;
};

} // namespace kqu::platform

#pragma once

#include "platform/dbus/PostedSignals.h"
#include "platform/interfaces/DistributedNotifications.h"
#include "platform/interfaces/EventSource.h"

#include <chrono>
#include <memory>
#include <vector>

namespace kqu::platform {

/// The distributed notification centre on D-Bus: every signal `Posted` of the interface
/// com.brackwater.DistributedNotifications, whatever its path and its arguments.
///
/// It hears everybody on the user's session bus. On the system bus, to which all users may post, it
/// hears root and the process's own user only. Either bus may be absent or go away; it is tried
/// again while the other goes on.
///
/// The program's name on the session bus stands for its listening, and the program is started and
/// found by it. A sender who sees that the name has an owner may post on either bus at once. So the
/// name is asked for when the session bus has taken the subscription, and the system bus has been
/// dealt with as well or has taken too long. It is asked for anew on each new connection. Whether
/// the name is given is of no interest; a second copy queues for it.
class DBusNotifications final : public DistributedNotifications, private EventSource {
  public:
    /// Connects to nothing yet. `retryAfter` is the pause before an absent bus is tried again.
    explicit DBusNotifications(std::chrono::milliseconds retryAfter = std::chrono::seconds(3));

    /// The process must run as its final user by the first call, which connects without waiting.
    [[nodiscard]] Registration Listen(Listener listener) override;

    /// One for the session bus, one for the system bus and one for the name, for the loop to watch
    /// in this order. They are valid as long as this object is.
    [[nodiscard]] std::vector<EventSource*> Sources();

    /// How long the system bus may take once the session bus is ready.
    static constexpr std::chrono::seconds patience{2};

  private:
    /// A moment only while nothing but the system bus is waited for.
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

    std::shared_ptr<Listener> listener_;
    PostedSignals session_;
    PostedSignals system_;
};

} // namespace kqu::platform

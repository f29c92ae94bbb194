#pragma once

#include "platform/interfaces/DistributedNotifications.h"
#include "platform/interfaces/EventSource.h"

#include <chrono>
#include <memory>
#include <vector>

namespace kqu::platform {

class OwnName;
class PostedSignals;

/// The distributed notification centre on D-Bus: every signal `Posted` of the interface
/// com.brackwater.DistributedNotifications, whatever its path and its arguments.
///
/// It hears everybody on the user's session bus. On the system bus, to which all users may post, it
/// hears root and the process's own user only. Either bus may be absent or go away; it is tried
/// again while the other goes on. The program's name on the session bus stands for its listening.
class DBusNotifications final : public DistributedNotifications {
  public:
    /// Connects to nothing yet. `retryAfter` is the pause before an absent bus is tried again.
    explicit DBusNotifications(std::chrono::milliseconds retryAfter = std::chrono::seconds(3));
    ~DBusNotifications() override;

    /// The process must run as its final user by the first call, which connects without waiting.
    [[nodiscard]] Registration Listen(Listener listener) override;

    /// One for the session bus, one for the system bus and one for the name, for the loop to watch
    /// in this order. They are valid as long as this object is.
    [[nodiscard]] std::vector<EventSource*> Sources();

  private:
    std::shared_ptr<Listener> listener_;
    std::unique_ptr<PostedSignals> session_;
    std::unique_ptr<PostedSignals> system_;
    std::unique_ptr<OwnName> name_;
};

} // namespace kqu::platform

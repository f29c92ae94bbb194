#pragma once

#include "platform/interfaces/Registration.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kqu::platform {

/// A value of another kind than the messenger knows (a container, a descriptor).
struct OtherWireValue {};

/// A value as it came over the bus: text, a boolean, a number, or something else.
using WireValue = std::variant<OtherWireValue, bool, double, std::string>;
using WireDictionary = std::vector<std::pair<std::string, WireValue>>;

/// One posted notification. An argument that was not sent, or that is of no kind that fits its
/// place (a name that is no text, user information that is no dictionary), is absent.
struct PostedNotification {
    std::optional<std::string> name;
    std::optional<WireValue> object;
    std::optional<WireDictionary> userInfo;
};

/// The machine's distributed notification centre, to which every process may post.
class DistributedNotifications {
  public:
    using Listener = std::function<void(const PostedNotification&)>;

    virtual ~DistributedNotifications() = default;

    /// Every notification that is posted from now on is delivered to `listener` once, from the
    /// event loop. One listens at a time. The first call connects to the buses, and goes on trying
    /// where that fails.
    [[nodiscard]] virtual Registration Listen(Listener listener) = 0;
};

} // namespace kqu::platform

#include "platform/dbus/OwnName.h"

#include "platform/dbus/PostedSignals.h"

namespace kqu::platform {

std::optional<Moment> OwnName::Due() const {
    const std::optional<Moment> listening = session_.ListeningSince();
    if (!listening || session_.HasAskedForName())
        return std::nullopt;
    return *listening + patience;
}

bool OwnName::Collect(EventQueue&) {
    const std::optional<Moment> due = Due();
    if (due && (system_.IsSettled() || std::chrono::steady_clock::now() >= *due))
        session_.AskForName(name);
    return false;
}

} // namespace kqu::platform

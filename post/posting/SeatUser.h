#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace kqu::post {

/// A session of a user.
struct Session {
    std::string name;
    uid_t user;
};

/// The session that is at the machine's own screen and keyboard now, the active one of seat0, by
/// sd-login(3). Nothing where nobody has logged in, where it is the greeter that is shown, or where
/// there is no login manager.
[[nodiscard]] std::optional<Session> SessionAtSeat();

} // namespace kqu::post

#pragma once

#include "post/posting/Connection.h"

namespace kqu::post {

/// How long `kqu-post --start-only` waits for the bus's greeting, and its exit status when none
/// comes.
constexpr std::chrono::seconds untilSilent{2};
constexpr int busIsSilent = 3;

/// Has the messenger running and listening before something is posted, and returns within the
/// patience of ten seconds in any case. Whether it listens; that it doesn't is no failure, and the
/// post can be made all the same. Asks over the connection that the post will take.
///
/// On the session bus it is started there: through the user's service manager if that knows the
/// messenger, so that a start that fails is known at once, else by the bus itself. One that runs
/// already costs one question to the bus. On the system bus root starts it for the user at the
/// seat, anybody else in the own session.
///
/// Raises nothing, and may be called by any thread. Root's start makes a child process for a
/// moment.
bool StartMessenger(const Connection& connection);

} // namespace kqu::post

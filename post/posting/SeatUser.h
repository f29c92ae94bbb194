#pragma once

#include "post/posting/Questions.h"

#include <optional>
#include <sys/types.h>

namespace kqu::post {

/// The user whose session is at the machine's own screen and keyboard now: asks the login manager
/// on the system bus for the active session of seat0. Nothing where nobody has logged in, where it
/// is the greeter that is shown, or where there is no login manager.
[[nodiscard]] std::optional<uid_t> UserAtSeat(Questions& systemBus);

} // namespace kqu::post

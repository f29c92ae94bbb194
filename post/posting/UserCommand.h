#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kqu::post {

/// Runs a program as another user, for root, and waits for its end until the deadline, when it is
/// killed. `command` is the program's absolute path and its arguments; `environment` is all that it
/// is given, as NAME=VALUE. Whether it ended with status 0.
///
/// The program is that user's completely, since that user may do with it what he likes: all user
/// and group ids, no descriptor, terminal, folder or variable of the caller. Nothing but system
/// calls happens between the fork and the program's start, so that a caller with several threads
/// may use it as well. Such a caller must not reap children that it did not start.
[[nodiscard]] bool RunAs(uid_t user, std::vector<std::string> command,
                         std::vector<std::string> environment,
                         std::chrono::steady_clock::time_point deadline);

} // namespace kqu::post

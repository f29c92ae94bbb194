#pragma once

#include <chrono>
#include <initializer_list>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kqu::post {

/// Leaves everything of the caller behind in a child process, but for the descriptors to keep:
/// other files, the terminal, the folder, keys, signal settings, priority, file mode mask and
/// raised limits. Makes system calls only. False if any of that failed.
[[nodiscard]] bool LeaveCaller(std::initializer_list<int> kept = {});

/// For root: runs a program as another user by setpriv(1), waits for its end, and has it killed by
/// timeout(1) when its time is over. `command` is the program's absolute path and its arguments.
/// Its environment says where the user's session bus is, and nothing else. Returns whether it ended
/// with status 0. The user may do anything with the program, so nothing of the caller's is left in
/// it.
///
/// A caller with several threads may use it. Such a caller must not reap children that it did not
/// start.
[[nodiscard]] bool RunAs(uid_t user, const std::vector<std::string>& command,
                         std::chrono::milliseconds most);

} // namespace kqu::post

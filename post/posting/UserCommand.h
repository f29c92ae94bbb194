#pragma once

#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

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

/// Leaves everything of the caller behind in a child process, but for the descriptors to keep:
/// other files, the terminal, the folder, keys, signal settings, scheduling and file mode mask.
/// Makes system calls only. False if any of that failed.
[[nodiscard]] bool LeaveCaller(std::initializer_list<int> kept = {});

/// For root: runs a program as another user by setpriv(1), waits for its end, and has it killed by
/// timeout(1) when its time is over. `command` is the program's absolute path and its arguments.
/// Its environment says where the user's session bus is, and nothing else. Returns its exit
/// status; -1 if it was not run or a signal ended it. The user may do anything with the program, so
/// nothing of the caller's is left in it.
///
/// A caller with several threads may use it. Such a caller must not reap children that it did not
/// start.
[[nodiscard]] int RunAs(uid_t user, const std::vector<std::string>& command,
                        std::chrono::milliseconds most);

} // namespace kqu::post

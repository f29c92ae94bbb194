#include "post/kqu-run/Child.h"

#include "post/posting/Program.h"
#include "post/posting/Text.h"

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kqu::run {

namespace {
/// Starts a program with these descriptors in the place of others; the reason why not, or 0.
int Spawn(pid_t& child, std::vector<std::string>& command, const sigset_t& mask,
          std::initializer_list<std::pair<int, int>> descriptors) {
    const std::vector<char*> arguments = post::Pointers(command);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const auto& [from, to] : descriptors)
        if (from >= 0)
            posix_spawn_file_actions_adddup2(&actions, from, to);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setsigmask(&attributes, &mask);
    const int reason =
        posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return reason;
}
} // namespace

pid_t StartChild(const Launch& launch, const Signals& signals, int output, int error) {
    const std::initializer_list<std::pair<int, int>> descriptors{
        {output, STDOUT_FILENO}, {error, STDERR_FILENO}, {launch.channel, launch.channel}};
    std::vector<std::string> command = launch.arguments;
    pid_t child = 0;
    int reason = Spawn(child, command, signals.Inherited(), descriptors);
    if (reason == ENOEXEC) { // a script that does not name its shell
        command.insert(command.begin(), {"/bin/sh", "-c", "exec \"$0\" \"$@\""});
        reason = Spawn(child, command, signals.Inherited(), descriptors);
    }
    if (reason != 0)
        throw post::StatusError(launch.arguments.front() + ": " + std::strerror(reason),
                                reason == ENOENT ? 127 : 126);
    return child;
}

std::optional<Ending> Ended(pid_t child) {
    siginfo_t information{};
    const int result =
        waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOHANG | WNOWAIT);
    if (result != 0 || information.si_pid != child)
        return std::nullopt;
    if (information.si_code == CLD_EXITED)
        return Ending{information.si_status, 0};
    return Ending{0, information.si_status};
}

int StoppedBy(pid_t child) {
    siginfo_t information{};
    const int result = waitid(P_PID, static_cast<id_t>(child), &information, WSTOPPED | WNOHANG);
    return result == 0 && information.si_pid == child ? information.si_status : 0;
}

void Reap(pid_t child) {
    TEMP_FAILURE_RETRY(waitpid(child, nullptr, 0));
}

} // namespace kqu::run

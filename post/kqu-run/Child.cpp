#include "post/kqu-run/Child.h"

#include "post/posting/Program.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>

namespace kqu::run {

namespace {
constexpr int isNotThere = 127;
constexpr int cannotRun = 126;

/// Takes the descriptor over to the new process.
void Keep(int number) {
    fcntl(number, F_SETFD, 0);
}

/// In the new process: nothing here may allocate. Returns the reason why it is still here.
int Become(const std::vector<char*>& arguments, const Launch& launch, const Signals& signals,
           std::array<int, 2> streams) {
    if ((streams[0] >= 0 && dup2(streams[0], STDOUT_FILENO) < 0) ||
        (streams[1] >= 0 && dup2(streams[1], STDERR_FILENO) < 0))
        return errno;
    if (launch.channel >= 0)
        Keep(launch.channel);
    signals.Restore();
    execvp(arguments[0], arguments.data());
    return errno;
}

/// The reason why the new process could not become the command, or 0 when it has.
int AwaitExec(const Descriptor& report) {
    int reason = 0;
    ssize_t got = 0;
    do {
        got = read(report.Number(), &reason, sizeof reason);
    } while (got < 0 && errno == EINTR);
    return got == sizeof reason ? reason : 0;
}

[[noreturn]] void FailToStart(const std::string& command, int reason) {
    throw post::StatusError(command + ": " + std::strerror(reason),
                            reason == ENOENT ? isNotThere : cannotRun);
}
} // namespace

pid_t StartChild(const Launch& launch, const Signals& signals, int output, int error) {
    std::vector<char*> arguments;
    arguments.reserve(launch.arguments.size() + 1);
    for (const std::string& argument : launch.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        FailToStart(launch.arguments.front(), errno);
    const Descriptor report(ends[0]);
    Descriptor reporter(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        const int reason = Become(arguments, launch, signals, {output, error});
        const ssize_t told = write(reporter.Number(), &reason, sizeof reason);
        _exit(told == sizeof reason ? cannotRun : isNotThere);
    }
    if (child < 0)
        FailToStart(launch.arguments.front(), errno);
    reporter.Close();
    if (const int reason = AwaitExec(report); reason != 0) {
        Reap(child);
        FailToStart(launch.arguments.front(), reason);
    }
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
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace kqu::run

#include "platform/functions/Command.h"

#include "platform/CDeleter.h"
#include "platform/loop/SignalSource.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kqu::platform {

namespace {
constexpr int failure = -1;

using Actions = CPointer<posix_spawn_file_actions_t, posix_spawn_file_actions_destroy>;
using Attributes = CPointer<posix_spawnattr_t, posix_spawnattr_destroy>;

/// Starts the shell with `output` as its standard output, in a process group of its own, by which
/// what it starts ends with it. -1 if that fails. Signal handlers become the usual ones again, and
/// everything else that the program has open is close-on-exec.
pid_t StartShell(std::string command, int output) {
    // With root's rights nothing is run from the folders of whoever set the variable.
    if (geteuid() == 0)
        setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
    std::string shell = "sh";
    std::string option = "-c";
    std::array<char*, 4> arguments{shell.data(), option.data(), command.data(), nullptr};
    posix_spawn_file_actions_t actionsPlace;
    posix_spawnattr_t attributesPlace;
    const Actions actions(posix_spawn_file_actions_init(&actionsPlace) == 0 ? &actionsPlace
                                                                            : nullptr);
    const Attributes attributes(posix_spawnattr_init(&attributesPlace) == 0 ? &attributesPlace
                                                                            : nullptr);
    pid_t process = failure;
    const bool isStarted =
        actions && attributes &&
        posix_spawn_file_actions_adddup2(actions.get(), output, STDOUT_FILENO) == 0 &&
        posix_spawn_file_actions_addopen(actions.get(), STDERR_FILENO, "/dev/null", O_WRONLY, 0) ==
            0 &&
        posix_spawnattr_setflags(attributes.get(), POSIX_SPAWN_SETPGROUP) == 0 &&
        posix_spawn(&process, "/bin/sh", actions.get(), attributes.get(), arguments.data(),
                    environ) == 0;
    return isStarted ? process : failure;
}
} // namespace

std::unique_ptr<Command> Command::Start(const std::string& command) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return nullptr;
    const pid_t process = StartShell(command, ends[1]);
    close(ends[1]);
    if (process != failure)
        return std::unique_ptr<Command>(new Command(ends[0], process));
    close(ends[0]);
    return nullptr;
}

Command::~Command() {
    Close();
}

std::size_t Command::Read(std::byte* block, std::size_t size) {
    std::size_t done = 0;
    isAtEnd_ = isAtEnd_ || left_ < size;
    while (done < size && !isAtEnd_ && !isInError_) {
        isInError_ = !WaitForInput(output_);
        const ssize_t got = isInError_ ? 0 : read(output_, block + done, size - done);
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (got == 0)
            isAtEnd_ = !isInError_;
        else
            isInError_ = errno != EINTR;
    }
    left_ -= done;
    return done;
}

int Command::Close() {
    const pid_t process = std::exchange(process_, failure);
    if (process == failure)
        return failure;
    close(output_);
    const auto end = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (end >= 0 && !WaitForInput(end))
        kill(-process, SIGTERM);
    if (end >= 0)
        close(end);
    int status = failure;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            return failure;
    return status;
}

} // namespace kqu::platform

#pragma once

#include "post/kqu-run/Launch.h"
#include "post/kqu-run/Signals.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace kqu::run {

/// The command could not be started; the message is one line for the user.
class StartError : public std::runtime_error {
  public:
    StartError(const std::string& message, int exitStatus)
        : std::runtime_error(message), status(exitStatus) {}
    /// 127 if the command isn't there, 126 if it is but can't be run.
    int status;
};

/// How a process ended.
struct Ending {
    int status = 0;
    /// The signal that ended it, or 0.
    int signal = 0;
};

/// Starts the command in the process group of this process, with the standard streams as given (-1
/// leaves a stream as it is), and returns once it runs. Raises StartError.
[[nodiscard]] pid_t StartChild(const Launch& launch, const Signals& signals, int output, int error);

/// How the child has ended, if it has; it stays in the process table until it is reaped.
[[nodiscard]] std::optional<Ending> Ended(pid_t child);
/// The signal that stopped the child since the last time it was asked, or 0.
[[nodiscard]] int StoppedBy(pid_t child);
/// Waits for the child and takes it out of the process table.
void Reap(pid_t child);

} // namespace kqu::run

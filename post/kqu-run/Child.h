#pragma once

#include "post/kqu-run/Launch.h"
#include "post/kqu-run/Signals.h"

#include <optional>
#include <sys/types.h>

namespace kqu::run {

/// How a process ended.
struct Ending {
    int status = 0;
    /// The signal that ended it, or 0.
    int signal = 0;
};

/// Starts the command in the process group of this process, with the standard streams as given (-1
/// leaves a stream as it is), and returns once it runs. Raises StatusError: 127 if the command
/// isn't there, 126 if it is but can't be run.
[[nodiscard]] pid_t StartChild(const Launch& launch, const Signals& signals, int output, int error);

/// How the child has ended, if it has; it stays in the process table until it is reaped.
[[nodiscard]] std::optional<Ending> Ended(pid_t child);
/// The signal that stopped the child since the last time it was asked, or 0.
[[nodiscard]] int StoppedBy(pid_t child);
/// Waits for the child and takes it out of the process table.
void Reap(pid_t child);

} // namespace kqu::run

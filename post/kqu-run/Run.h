#pragma once

#include "post/kqu-run/Child.h"
#include "post/kqu-run/CommandLine.h"

namespace kqu::run {

/// Runs a command and shows it until it has ended; or shows one that runs already, until it ends or
/// a signal ends this. Raises StatusError where there is nothing to show.
[[nodiscard]] Ending RunShown(Request request);

} // namespace kqu::run

#pragma once

#include "post/posting/Descriptor.h"

#include <csignal>
#include <sys/signalfd.h>

namespace kqu::run {

/// While it lives, signals wait to be read instead of acting on kqu-run. The tool inherits
/// what kqu-run has inherited, but that the end of a child is not ignored.
class Signals {
  public:
    Signals();

    /// Readable when a signal waits.
    [[nodiscard]] int Number() const { return waiting_.Number(); }
    /// The next signal that waits; false if there is none.
    [[nodiscard]] bool Next(signalfd_siginfo& signal) const;
    /// The mask for the tool.
    [[nodiscard]] const sigset_t& Inherited() const { return inheritedMask_; }

  private:
    Descriptor waiting_;
    sigset_t inheritedMask_{};
};

/// Does to this process what the signal does to one that doesn't care for it: stops it, for
/// example, until it is continued.
void ActOn(int number);

/// Ends this process by the signal, so that whoever waits for it sees what became of the tool. No
/// core is written: the tool has written its own. Returns only if the signal doesn't end anybody.
void DieBy(int number);

} // namespace kqu::run

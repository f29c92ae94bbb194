#include "post/kqu-run/Signals.h"

#include <array>
#include <sys/prctl.h>

namespace kqu::run {

namespace {
/// Those that stop a process because it uses its terminal from the background, or that can't be
/// caught, act on kqu-run as on anybody. Those of a process's own faults are sent by others too; a
/// real fault ends kqu-run all the same.
constexpr std::array<int, 4> notOurs{SIGKILL, SIGSTOP, SIGTTIN, SIGTTOU};

sigset_t OurSignals() {
    sigset_t ours;
    sigfillset(&ours);
    for (const int number : notOurs)
        sigdelset(&ours, number);
    return ours;
}

void SetAction(int number, void (*handler)(int), struct sigaction& before) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(number, &action, &before);
}
} // namespace

Signals::Signals() {
    const sigset_t ours = OurSignals();
    sigprocmask(SIG_BLOCK, &ours, &inheritedMask_);
    // Who ignores it is never told what became of a child.
    struct sigaction before {};
    SetAction(SIGCHLD, SIG_DFL, before);
    waiting_ = Descriptor(signalfd(-1, &ours, SFD_NONBLOCK | SFD_CLOEXEC));
}

bool Signals::Next(signalfd_siginfo& signal) const {
    // A write to a reader that has gone sends SIGPIPE to the writer itself; the write reports it.
    const auto isOfOwnWrite = [&] {
        return signal.ssi_signo == SIGPIPE && signal.ssi_pid == static_cast<unsigned>(getpid());
    };
    bool hasNext = false;
    do {
        hasNext = read(waiting_.Number(), &signal, sizeof signal) == sizeof signal;
    } while (hasNext && isOfOwnWrite());
    return hasNext;
}

void ActOn(int number) {
    struct sigaction before {};
    SetAction(number, SIG_DFL, before);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, number);
    sigset_t mask;
    kill(getpid(), number);
    sigprocmask(SIG_UNBLOCK, &only, &mask);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    sigaction(number, &before, nullptr);
}

void DieBy(int number) {
    prctl(PR_SET_DUMPABLE, 0);
    ActOn(number);
}

} // namespace kqu::run

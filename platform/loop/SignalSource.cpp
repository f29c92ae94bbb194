#include "platform/loop/SignalSource.h"

#include <cassert>
#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kqu::platform {

namespace {
/// The counter that the signal handler raises; -1 while there is no source.
volatile std::sig_atomic_t raised = -1;
volatile std::sig_atomic_t endsAtOnce = 0;

void Raise(int /*signal*/) {
    if (endsAtOnce != 0)
        _exit(0);
    const int error = errno;
    constexpr std::uint64_t one = 1;
    // A counter that is full says all that is to be said.
    [[maybe_unused]] const auto written = write(raised, &one, sizeof one);
    errno = error;
}

void DoNothing(int /*signal*/) {}
} // namespace

SignalSource::SignalSource(std::function<void()> terminate) : terminate_(std::move(terminate)) {
    assert(raised == -1);
    const int counter = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (counter < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    raised = counter;
    for (std::size_t index = 0; index < signals.size(); ++index) {
        struct sigaction action {};
        action.sa_handler = signals[index] == SIGPIPE ? DoNothing : Raise;
        action.sa_flags = SA_RESTART;
        sigemptyset(&action.sa_mask);
        sigaction(signals[index], &action, &former_[index]);
    }
}

SignalSource::~SignalSource() {
    for (std::size_t index = 0; index < signals.size(); ++index)
        sigaction(signals[index], &former_[index], nullptr);
    close(raised);
    raised = -1;
}

pollfd SignalSource::Watch() const {
    return {raised, POLLIN, 0};
}

bool SignalSource::Collect(EventQueue& queue) {
    std::uint64_t count = 0;
    if (read(raised, &count, sizeof count) == sizeof count)
        queue.Post(terminate_);
    return false;
}

EndingAtOnce::EndingAtOnce() {
    endsAtOnce = 1;
}

EndingAtOnce::~EndingAtOnce() {
    endsAtOnce = 0;
}

} // namespace kqu::platform

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
volatile std::sig_atomic_t isRequested = 0;
volatile std::sig_atomic_t endsAtOnce = 0;

void Raise(int /*signal*/) {
    if (endsAtOnce != 0)
        _exit(0);
    isRequested = 1;
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
    isRequested = 0;
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
    isRequested = 0;
}

pollfd SignalSource::Watch() const {
    return {raised, POLLIN, 0};
}

bool SignalSource::Collect(EventQueue& /*queue*/) {
    // The counter only ends the sleep of the loop, which then lets the source interrupt.
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = read(raised, &count, sizeof count);
    return false;
}

void SignalSource::Interrupt() {
    if (isRequested != 0 && terminate_)
        std::exchange(terminate_, nullptr)();
}

bool WaitForInput(int descriptor) {
    // The request is looked at before each sleep; one that comes in between is in the counter.
    while (isRequested == 0) {
        std::array<pollfd, 2> watched{{{descriptor, POLLIN, 0}, {raised, POLLIN, 0}}};
        if (poll(watched.data(), watched.size(), -1) > 0 && watched[0].revents != 0)
            return true;
    }
    return false;
}

EndingAtOnce::EndingAtOnce() {
    endsAtOnce = 1;
}

EndingAtOnce::~EndingAtOnce() {
    endsAtOnce = 0;
}

} // namespace kqu::platform

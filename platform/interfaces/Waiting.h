#pragma once

#include <chrono>
#include <optional>
#include <poll.h>
#include <span>

namespace kqu::platform {

/// A moment of the loop's clock: nanoseconds on a clock that never jumps.
using Moment = std::chrono::time_point<std::chrono::steady_clock, std::chrono::nanoseconds>;
using std::chrono::nanoseconds;

/// The present moment of the machine's monotonic clock.
[[nodiscard]] inline Moment MonotonicNow() {
    return std::chrono::steady_clock::now();
}

/// The clock of the event loop and its only way to sleep.
class Waiting {
  public:
    virtual ~Waiting() = default;

    [[nodiscard]] virtual Moment Now() = 0;

    /// Sleeps until one of `watched` is ready, `until` has come, or a signal arrived. Without a
    /// moment it sleeps for as long as it takes. Never returns because of `until` before that
    /// moment.
    virtual void Wait(std::span<pollfd> watched, std::optional<Moment> until) = 0;
};

} // namespace kqu::platform

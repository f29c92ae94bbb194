#include "platform/loop/SystemWaiting.h"

#include <algorithm>
#include <ctime>

namespace kqu::platform {

namespace {
timespec Between(Moment now, Moment until) {
    using std::chrono::seconds;
    const nanoseconds left = std::max(now, until) - now;
    const auto whole = std::chrono::duration_cast<seconds>(left);
    return {static_cast<time_t>(whole.count()), static_cast<long>((left - whole).count())};
}
} // namespace

Moment SystemWaiting::Now() {
    return MonotonicNow();
}

void SystemWaiting::Wait(std::span<pollfd> watched, std::optional<Moment> until) {
    for (;;) {
        timespec left{};
        if (until)
            left = Between(Now(), *until);
        // The signal mask stays as it is.
        const int ready = ppoll(watched.data(), watched.size(), until ? &left : nullptr, nullptr);
        // Whatever the kernel's clock thinks, the moment has come only when ours says so.
        if (ready != 0 || !until || Now() >= *until)
            return;
    }
}

} // namespace kqu::platform

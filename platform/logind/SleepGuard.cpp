#include "platform/logind/SleepGuard.h"

#include <utility>

namespace kqu::platform {

namespace {
constexpr const char* delayReason = "Is told of sleep and shutdown";
}

SleepGuard::SleepGuard(LockOffice& office)
    : block_(office, LockMode::Block), delay_(office, LockMode::Delay) {}

void SleepGuard::Begin(Moment now) {
    isOnDuty_ = true;
    isPreparing_ = false;
    Look(now);
}

void SleepGuard::End() {
    isOnDuty_ = false;
    block_.Forgo();
    delay_.Forgo();
}

void SleepGuard::Answered(bool objects, const std::string& why, Moment now) {
    if (!objects)
        block_.Forgo();
    else if (isOnDuty_ && !isPreparing_)
        block_.Want(why, now);
}

void SleepGuard::PreparationBegan() {
    isPreparing_ = true;
}

void SleepGuard::Acknowledge() {
    delay_.Forgo();
}

void SleepGuard::PreparationEnded(Moment now) {
    isPreparing_ = false;
    Look(now);
}

void SleepGuard::Granted(std::uint64_t request, InhibitorLock lock) {
    // One that nobody waits for any more goes with this call.
    static_cast<void>(block_.Granted(request, lock) || delay_.Granted(request, lock));
}

void SleepGuard::Refused(std::uint64_t request) {
    static_cast<void>(block_.Refused(request) || delay_.Refused(request));
}

void SleepGuard::Look(Moment now) {
    if (isOnDuty_ && !isPreparing_)
        delay_.Want(delayReason, now);
}

std::optional<Moment> SleepGuard::Due() const {
    if (!isOnDuty_ || isPreparing_)
        return std::nullopt;
    return delay_.Due();
}

} // namespace kqu::platform

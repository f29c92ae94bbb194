#include "platform/logind/LockKeeper.h"

namespace kqu::platform {

void LockKeeper::Want(const std::string& why, Moment now) {
    const bool isServed = lock_.IsHeld() && heldFor_ == why;
    isWanted_ = true;
    if (isServed || request_ != 0 || now < notBefore_)
        return;
    notBefore_ = now + patience;
    askedFor_ = why;
    request_ = office_.Request(mode_, why);
}

void LockKeeper::Forgo() {
    lock_.Drop();
    request_ = 0;
    isWanted_ = false;
    notBefore_ = Moment();
}

bool LockKeeper::Granted(std::uint64_t request, InhibitorLock& lock) {
    if (request != request_)
        return false;
    request_ = 0;
    heldFor_ = askedFor_;
    lock_ = std::move(lock);
    return true;
}

bool LockKeeper::Refused(std::uint64_t request) {
    if (request != request_)
        return false;
    request_ = 0;
    return true;
}

std::optional<Moment> LockKeeper::Due() const {
    if (!isWanted_ || lock_.IsHeld() || request_ != 0)
        return std::nullopt;
    return notBefore_;
}

} // namespace kqu::platform

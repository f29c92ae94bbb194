#include "platform/logind/InhibitorLock.h"

#include <fcntl.h>
#include <unistd.h>

namespace kqu::platform {

InhibitorLock InhibitorLock::CopyOf(int descriptor) {
    InhibitorLock lock;
    lock.descriptor_ = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return lock;
}

InhibitorLock& InhibitorLock::operator=(InhibitorLock&& other) noexcept {
    if (this != &other) {
        Drop();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

void InhibitorLock::Drop() {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0)
        close(descriptor);
}

} // namespace kqu::platform

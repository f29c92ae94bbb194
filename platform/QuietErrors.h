#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace kqu::platform {

/// Keeps libraries from printing on standard error for as long as it lives: only the program itself
/// prints there. Not to be held while a command is started.
class QuietErrors {
  public:
    QuietErrors() : kept_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (kept_ >= 0 && nowhere >= 0)
            ::dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0)
            ::close(nowhere);
    }
    ~QuietErrors() {
        if (kept_ < 0)
            return;
        ::dup2(kept_, STDERR_FILENO);
        ::close(kept_);
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

  private:
    int kept_;
};

} // namespace kqu::platform

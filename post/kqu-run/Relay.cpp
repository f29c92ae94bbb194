#include "post/kqu-run/Relay.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>

namespace kqu::run {

namespace {
constexpr std::size_t readSize = 1 << 18;
constexpr std::size_t withoutLimit = std::numeric_limits<std::size_t>::max();

/// The file behind a descriptor, opened anew without blocking: only where that changes nothing but
/// the blocking.
Descriptor OpenAgain(int number) {
    struct stat status {};
    if (fstat(number, &status) != 0 || !(S_ISFIFO(status.st_mode) || isatty(number)))
        return {};
    const std::string path = "/proc/self/fd/" + std::to_string(number);
    return Descriptor(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

/// How much a descriptor takes without blocking once poll has said that it takes something.
std::size_t TakenAtOnce(int number, bool neverBlocks) {
    struct stat status {};
    const bool isFile = fstat(number, &status) == 0 && S_ISREG(status.st_mode);
    return neverBlocks || isFile ? withoutLimit : PIPE_BUF;
}
} // namespace

Relay::Relay(Descriptor from, int to, bool filters, Tap tap)
    : from_(std::move(from)),
      to_(to),
      ownTo_(OpenAgain(to)),
      atOnce_(TakenAtOnce(to, static_cast<bool>(ownTo_))),
      tap_(std::move(tap)),
      buffer_(readSize) {
    if (filters)
        filter_.emplace();
}

void Relay::Await(std::vector<pollfd>& polled) const {
    const bool writes = !pending_.empty();
    polled.push_back({writes ? -1 : from_.Number(), POLLIN, 0});
    // Without events it still tells when the reader has gone.
    polled.push_back({from_ || writes ? To() : -1, static_cast<short>(writes ? POLLOUT : 0), 0});
}

void Relay::Work(const pollfd& from, const pollfd& to) {
    if ((to.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0 && pending_.empty()) {
        // The tool shall find its reader gone just as it would have.
        from_.Close();
        return;
    }
    // The poll may be older than the tool's end and its last words: only a read tells that there
    // are no more.
    if (from.revents != 0 || (from.fd >= 0 && toolHasEnded_))
        Read();
    const bool writesNow = to.revents != 0 || atOnce_ == withoutLimit;
    if (!pending_.empty() && writesNow)
        Write();
}

void Relay::Read() {
    const ssize_t got = read(from_.Number(), buffer_.data(), buffer_.size());
    const bool isLater = got < 0 && (errno == EINTR || (errno == EAGAIN && !toolHasEnded_));
    if (isLater)
        return;
    if (got <= 0) {
        End();
        return;
    }
    const std::string_view bytes(buffer_.data(), static_cast<std::size_t>(got));
    tap_(bytes);
    if (filter_)
        filter_->Pass(bytes, pending_);
    else
        pending_ = bytes;
}

void Relay::End() {
    from_.Close();
    if (filter_)
        filter_->End(pending_);
}

void Relay::Write() {
    const std::size_t size = std::min(pending_.size() - written_, atOnce_);
    const ssize_t put = write(To(), pending_.data() + written_, size);
    if (put < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    written_ += put > 0 ? static_cast<std::size_t>(put) : 0;
    // A reader that has gone is the tool's matter. A full disk is not: without us it would have
    // lost what it wrote and gone on.
    if (put < 0 && errno == EPIPE)
        from_.Close();
    else if (put < 0 && failure_ == 0)
        failure_ = errno;
    if (put < 0 || written_ == pending_.size()) {
        pending_.clear();
        written_ = 0;
    }
}

} // namespace kqu::run

#pragma once

#include "post/kqu-run/tools/RsyncFilter.h"
#include "post/posting/Descriptor.h"

#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::run {

/// Passes one stream of a tool on to where it would have gone. Reads only when everything read
/// before is written, so that a slow reader slows the tool as it would have without us, and never
/// waits in a write, so that signals get through whatever the reader does.
class Relay {
  public:
    /// Sees all bytes of the tool.
    using Tap = std::function<void(std::string_view bytes)>;

    /// `from` does not block. `filters`: takes rsync's progress out.
    Relay(Descriptor from, int to, bool filters, Tap tap);

    /// Adds what the relay waits for: always two entries.
    void Await(std::vector<pollfd>& polled) const;
    /// Does what can be done without waiting, after a poll of the two entries.
    void Work(const pollfd& from, const pollfd& to);
    /// What is not there yet will never come, even if somebody else still holds the stream open.
    void ToolHasEnded() { toolHasEnded_ = true; }
    /// Whether nothing more can come and all is written.
    [[nodiscard]] bool IsDone() const { return pending_.empty() && !from_; }
    /// Whether it is the reader's turn.
    [[nodiscard]] bool IsWaiting() const { return !pending_.empty(); }
    /// The reason (errno) why something could not be written, other than that the reader has gone;
    /// 0 if all was written.
    [[nodiscard]] int Failure() const { return failure_; }
    [[nodiscard]] int From() const { return from_.Number(); }

  private:
    void Read();
    void Write();
    void End();
    [[nodiscard]] int To() const { return ownTo_ ? ownTo_.Number() : to_; }

    Descriptor from_;
    int to_;
    /// The same pipe or terminal, opened once more so that our writes don't block and all others'
    /// still do.
    Descriptor ownTo_;
    /// Where a write of this size doesn't block once there is room.
    std::size_t atOnce_;
    std::optional<RsyncFilter> filter_;
    Tap tap_;
    std::string pending_;
    std::size_t written_ = 0;
    std::vector<char> buffer_;
    bool toolHasEnded_ = false;
    int failure_ = 0;
};

} // namespace kqu::run

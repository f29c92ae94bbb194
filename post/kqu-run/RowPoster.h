#pragma once

#include "post/posting/Poster.h"

#include <chrono>
#include <memory>

namespace kqu::run {

/// Posts in a thread of its own, so that no bus, slow, silent or absent, holds the tool up. Only
/// the newest notification waits; those that the bus doesn't take are dropped, and a bus that isn't
/// there is tried again now and then.
class RowPoster {
  public:
    /// `onSystemBus`: as for kqu-post; the connection stays for the whole run, so that the
    /// messenger can ask the bus who posts. `startsMessenger`: the messenger is started before the
    /// first post. `isVerbose`: tells once why a post failed.
    RowPoster(post::Bus bus, bool startsMessenger, bool isVerbose);

    void Post(post::Notification notification);
    /// Waits until the newest has been posted or dropped, but no longer than this.
    void Finish(std::chrono::milliseconds patience);

  private:
    struct Shared;
    static void Work(const std::shared_ptr<Shared>& shared);

    /// The thread may outlive this object: it may be waiting for the bus.
    std::shared_ptr<Shared> shared_;
};

} // namespace kqu::run

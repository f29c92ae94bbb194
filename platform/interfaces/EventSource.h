#pragma once

#include "platform/interfaces/Waiting.h"

#include <functional>
#include <optional>
#include <poll.h>

namespace kqu::platform {

/// Where a source puts what it has taken in. Deliveries run later, from the loop, in the order of
/// posting, and may themselves pump the loop.
class EventQueue {
  public:
    virtual ~EventQueue() = default;
    virtual void Post(std::function<void()> delivery) = 0;
};

/// Something that the event loop watches: a connection to a server, a signal pipe.
class EventSource {
  public:
    virtual ~EventSource() = default;

    /// The descriptor to poll and its events; a descriptor of -1 when there is nothing to poll.
    [[nodiscard]] virtual pollfd Watch() const { return {-1, 0, 0}; }

    /// The moment at which Collect must run even if the descriptor stays silent.
    [[nodiscard]] virtual std::optional<Moment> Due() const { return std::nullopt; }

    /// Sends what waits to be sent and takes in what can be had without waiting, the library's own
    /// queue first, bounded in amount; posts one delivery for each event. Calls no handler itself,
    /// so that it is never entered twice. True if more could be had at once, so that the loop must
    /// not sleep.
    virtual bool Collect(EventQueue& queue) = 0;

    /// Does at once what cannot wait for its turn in the queue. Called before each delivery, at
    /// every depth of the loop, so it must cost next to nothing as long as there is nothing to do.
    virtual void Interrupt() {}
};

} // namespace kqu::platform

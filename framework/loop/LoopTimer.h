#pragma once

#include "framework/loop/EventLoop.h"

#include <chrono>

namespace kqu {

/// A timer of the event loop. It never fires early. A repeating timer keeps its phase; after a
/// delay of several periods it fires a single time.
class LoopTimer {
  public:
    enum class Repeat { Once, Always };

    LoopTimer(EventLoop& loop, EventLoop::Handler action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Counts `period` from now on, anew if it counted already. A period below 1 ms is 1 ms.
    void Start(std::chrono::milliseconds period, Repeat repeat);
    void Stop();
    [[nodiscard]] bool IsRunning() const { return running_; }

  private:
    friend class EventLoop;
    [[nodiscard]] platform::Moment Due() const { return due_; }
    void ArmAgain(platform::Moment now);

    EventLoop& loop_;
    EventLoop::Handler action_;
    platform::Moment due_;
    std::chrono::milliseconds period_{1};
    Repeat repeat_ = Repeat::Once;
    bool running_ = false;
};

} // namespace kqu

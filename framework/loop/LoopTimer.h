#pragma once

#include "framework/loop/EventLoop.h"

#include <chrono>
#include <cstdint>

namespace kqu {

/// What a timer does when its period is over.
enum class TimerMode : std::int32_t { Off = 0, Once = 1, Repeating = 2 };

/// A timer of the event loop. It never fires early. A repeating timer keeps its phase; after a
/// delay of several periods it fires a single time.
class LoopTimer {
  public:
    LoopTimer(EventLoop& loop, EventLoop::Handler action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Counts `period` from now on, anew if it counted already; with the mode Off it stops. A
    /// period below 1 ms is 1 ms.
    void Start(std::chrono::milliseconds period, TimerMode mode);

  private:
    friend class EventLoop;
    [[nodiscard]] platform::Moment Due() const { return due_; }
    void Stop();
    void ArmAgain(platform::Moment now);

    EventLoop& loop_;
    EventLoop::Handler action_;
    platform::Moment due_;
    std::chrono::milliseconds period_{1};
    TimerMode mode_ = TimerMode::Off;
};

} // namespace kqu

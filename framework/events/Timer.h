#pragma once

#include "framework/loop/LoopTimer.h"
#include "framework/ui/Control.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace kqu {

/// The framework's timer, a control of a window without a face. It runs from its creation, as far
/// as its mode allows; setting the mode to Once or Repeating starts the period anew.
class Timer : public InvisibleControl {
  public:
    Timer(Window& owner, TimerMode mode, std::int32_t periodInMilliseconds,
          std::function<void()> action);

    void SetMode(TimerMode mode) { timer_.Start(period_, mode); }

  private:
    LoopTimer timer_;
    std::chrono::milliseconds period_;
};

/// The event loop's own timer: has a mode and a period from the start, yet does nothing until
/// `Create`.
class EventLoopTimer : public InvisibleControl {
  public:
    EventLoopTimer(Window& owner, TimerMode mode, std::int32_t periodInMilliseconds,
                   std::function<void()> action);
    virtual ~EventLoopTimer() = default;

    /// Starts the timer with the mode and period that it has now.
    void Create();

    TimerMode Mode;
    std::int32_t Period;
    /// The status of the latest `Create`, 0 for success.
    std::int32_t Lasterror = 0;

  private:
    LoopTimer timer_;
};

} // namespace kqu

#pragma once

#include "framework/loop/LoopTimer.h"
#include "framework/ui/InvisibleControl.h"

#include <cstdint>
#include <functional>

namespace kqu {

/// What a timer does when its period is over.
enum class TimerMode : std::int32_t { Off = 0, Once = 1, Repeating = 2 };

/// The framework's timer, a control of a window without a face. It runs from its creation, as far
/// as its mode allows; setting the mode to Once or Repeating starts the period anew.
class Timer : public InvisibleControl {
  public:
    Timer(Window& ownerWindow, TimerMode mode, std::int32_t periodInMilliseconds,
          std::function<void()> action);

    [[nodiscard]] TimerMode Mode() const { return mode_; }
    void SetMode(TimerMode mode);
    [[nodiscard]] std::int32_t Period() const { return period_; }

  private:
    LoopTimer timer_;
    TimerMode mode_;
    std::int32_t period_;
};

/// The event loop's own timer: has a mode and a period from the start, yet does nothing until
/// `Create`.
class EventLoopTimer : public InvisibleControl {
  public:
    EventLoopTimer(Window& ownerWindow, TimerMode mode, std::int32_t periodInMilliseconds,
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

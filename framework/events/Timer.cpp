#include "framework/events/Timer.h"

#include "framework/Runtime.h"

#include <utility>

namespace kqu {

namespace {
void StartAs(LoopTimer& timer, TimerMode mode, std::int32_t period) {
    if (mode == TimerMode::Off)
        timer.Stop();
    else
        timer.Start(std::chrono::milliseconds(period),
                    mode == TimerMode::Once ? LoopTimer::Repeat::Once : LoopTimer::Repeat::Always);
}
} // namespace

Timer::Timer(Window& ownerWindow, TimerMode mode, std::int32_t periodInMilliseconds,
             std::function<void()> action)
    : InvisibleControl(ownerWindow),
      timer_(Runtime::Current().Loop(), std::move(action)),
      mode_(mode),
      period_(periodInMilliseconds) {
    StartAs(timer_, mode_, period_);
}

void Timer::SetMode(TimerMode mode) {
    mode_ = mode;
    StartAs(timer_, mode_, period_);
}

EventLoopTimer::EventLoopTimer(Window& ownerWindow, TimerMode mode,
                               std::int32_t periodInMilliseconds, std::function<void()> action)
    : InvisibleControl(ownerWindow),
      Mode(mode),
      Period(periodInMilliseconds),
      timer_(Runtime::Current().Loop(), std::move(action)) {}

void EventLoopTimer::Create() {
    StartAs(timer_, Mode, Period);
    Lasterror = 0;
}

} // namespace kqu

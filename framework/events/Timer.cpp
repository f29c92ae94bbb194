#include "framework/events/Timer.h"

#include "framework/Runtime.h"

#include <utility>

namespace kqu {

Timer::Timer(Window& owner, TimerMode mode, std::int32_t periodInMilliseconds,
             std::function<void()> action)
    : InvisibleControl{owner},
      timer_(Runtime::Current().Loop(), std::move(action)),
      period_(periodInMilliseconds) {
    SetMode(mode);
}

EventLoopTimer::EventLoopTimer(Window& owner, TimerMode mode, std::int32_t periodInMilliseconds,
                               std::function<void()> action)
    : InvisibleControl{owner},
      Mode(mode),
      Period(periodInMilliseconds),
      timer_(Runtime::Current().Loop(), std::move(action)) {}

void EventLoopTimer::Create() {
    timer_.Start(std::chrono::milliseconds(Period), Mode);
    Lasterror = 0;
}

} // namespace kqu

#include "framework/events/Timer.h"

#include "framework/Runtime.h"

#include <utility>

namespace kqu {

Timer::Timer(TimerMode mode, std::int32_t periodInMilliseconds, std::function<void()> action)
    : timer_(Runtime::Current().Loop(), std::move(action)), period_(periodInMilliseconds) {
    SetMode(mode);
}

EventLoopTimer::EventLoopTimer(TimerMode mode, std::int32_t periodInMilliseconds,
                               std::function<void()> action)
    : Mode(mode),
      Period(periodInMilliseconds),
      timer_(Runtime::Current().Loop(), std::move(action)) {}

void EventLoopTimer::Create() {
    timer_.Start(std::chrono::milliseconds(Period), Mode);
    Lasterror = 0;
}

} // namespace kqu

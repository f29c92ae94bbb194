#pragma once

#include "framework/events/Timer.h"

namespace kqu {

/// The event-loop timer of the panel's two working timers; adds nothing to its base.
class MyTimer : public EventLoopTimer {
  public:
    using EventLoopTimer::EventLoopTimer;
};

} // namespace kqu

#include "framework/loop/LoopTimer.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kqu {

LoopTimer::LoopTimer(EventLoop& loop, EventLoop::Handler action)
    : loop_(loop), action_(std::move(action)) {}

LoopTimer::~LoopTimer() {
    Stop();
}

void LoopTimer::Start(std::chrono::milliseconds period, TimerMode mode) {
    Stop();
    if (mode == TimerMode::Off)
        return;
    period_ = std::max(period, std::chrono::milliseconds(1));
    mode_ = mode;
    due_ = loop_.Now() + period_;
    loop_.timers_.push_back(this);
}

void LoopTimer::Stop() {
    std::erase(loop_.timers_, this);
}

void LoopTimer::ArmAgain(platform::Moment now) {
    if (mode_ == TimerMode::Once) {
        Stop();
        return;
    }
    const auto missed = (now - due_) / period_;
    due_ += (missed + 1) * std::chrono::nanoseconds(period_);
}

} // namespace kqu

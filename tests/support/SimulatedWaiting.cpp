#include "tests/support/SimulatedWaiting.h"

#include <algorithm>
#include <utility>

namespace kqu::simulation {

void SimulatedWaiting::Wait(std::span<pollfd> /*watched*/, std::optional<platform::Moment> until) {
    ++wakeUps_;
    if (world_.empty() && !until)
        throw NothingLeftToHappen();
    platform::Moment next = until.value_or(platform::Moment::max());
    if (!world_.empty())
        next = std::min(next, world_.begin()->first);
    HappenUntil(std::max(next, now_));
}

void SimulatedWaiting::At(std::chrono::nanoseconds sinceStart, std::function<void()> event) {
    world_.emplace(start + sinceStart, std::move(event));
}

void SimulatedWaiting::Pass(std::chrono::nanoseconds time) {
    HappenUntil(now_ + time);
}

void SimulatedWaiting::HappenUntil(platform::Moment moment) {
    while (!world_.empty() && world_.begin()->first <= moment) {
        const auto first = world_.begin();
        now_ = std::max(now_, first->first);
        const auto event = std::move(first->second);
        world_.erase(first);
        event();
    }
    now_ = std::max(now_, moment);
}

} // namespace kqu::simulation

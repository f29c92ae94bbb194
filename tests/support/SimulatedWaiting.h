#pragma once

#include "platform/interfaces/Waiting.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <stdexcept>
#include <utility>

namespace kqu::simulation {

/// Virtual time: sleeping jumps to the next thing that happens, a timer of the program or an event
/// of the world, whichever comes first.
class SimulatedWaiting final : public platform::Waiting {
  public:
    [[nodiscard]] platform::Moment Now() override { return now_; }
    void Wait(std::span<pollfd> /*watched*/, std::optional<platform::Moment> until) override {
        if (world_.empty() && !until)
            throw std::logic_error("the program sleeps and nothing will ever wake it");
        platform::Moment next = until.value_or(platform::Moment::max());
        if (!world_.empty())
            next = std::min(next, world_.begin()->first);
        HappenUntil(std::max(next, now_));
    }

    /// Lets something happen in the world at that time after the start.
    void At(std::chrono::nanoseconds sinceStart, std::function<void()> event) {
        world_.emplace(start + sinceStart, std::move(event));
    }
    /// Lets time pass while the program is busy; what was due in between happens.
    void Pass(std::chrono::nanoseconds time) { HappenUntil(now_ + time); }
    [[nodiscard]] std::chrono::nanoseconds SinceStart() const { return now_ - start; }

    /// Well away from zero, as on a machine that has been up for a while.
    static constexpr platform::Moment start{std::chrono::hours(5)};

  private:
    void HappenUntil(platform::Moment moment) {
        while (!world_.empty() && world_.begin()->first <= moment) {
            const auto first = world_.begin();
            now_ = std::max(now_, first->first);
            const auto event = std::move(first->second);
            world_.erase(first);
            event();
        }
        now_ = std::max(now_, moment);
    }

    platform::Moment now_ = start;
    std::multimap<platform::Moment, std::function<void()>> world_;
};

} // namespace kqu::simulation

#pragma once

#include "platform/interfaces/Waiting.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>

namespace kqu::simulation {

/// Raised when the program sleeps for ever in a world in which nothing more will happen.
class NothingLeftToHappen : public std::logic_error {
  public:
    NothingLeftToHappen() : std::logic_error("the program sleeps and nothing will ever wake it") {}
};

/// Virtual time: sleeping jumps to the next thing that happens, a timer of the program or an event
/// of the world, whichever comes first.
class SimulatedWaiting final : public platform::Waiting {
  public:
    [[nodiscard]] platform::Moment Now() override { return now_; }
    void Wait(std::span<pollfd> watched, std::optional<platform::Moment> until) override;

    /// Lets something happen in the world at that time after the start.
    void At(std::chrono::nanoseconds sinceStart, std::function<void()> event);
    /// Lets time pass while the program is busy; what was due in between happens.
    void Pass(std::chrono::nanoseconds time);
    [[nodiscard]] std::chrono::nanoseconds SinceStart() const { return now_ - start; }
    [[nodiscard]] std::uint64_t WakeUps() const { return wakeUps_; }

    /// Well away from zero, as on a machine that has been up for a while.
    static constexpr platform::Moment start{std::chrono::hours(5)};

  private:
    void HappenUntil(platform::Moment moment);

    platform::Moment now_ = start;
    std::multimap<platform::Moment, std::function<void()>> world_;
    std::uint64_t wakeUps_ = 0;
};

} // namespace kqu::simulation

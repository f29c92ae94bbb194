#pragma once

#include "platform/interfaces/Waiting.h"

#include <chrono>
#include <optional>

namespace kqu::platform {

/// When to ask the listener whether the system may sleep: soon after something has changed, and all
/// the time while something runs, since the power source changes unheard. While nothing runs, the
/// answer can't change by itself, and nobody is woken for it.
class QuestionTimes {
  public:
    /// While something runs. Below a second, so that with the way to the login manager a lock
    /// outlives its reason by less than that.
    static constexpr std::chrono::milliseconds period{750};
    /// Between two questions at least: changes come in floods.
    static constexpr std::chrono::milliseconds leastGap{200};

    void Changed() { hasChanged_ = true; }
    void Asked(Moment now, bool somethingRuns) {
        asked_ = now;
        hasChanged_ = false;
        somethingRuns_ = somethingRuns;
    }
    [[nodiscard]] std::optional<Moment> Due() const {
        if (hasChanged_)
            return asked_ + leastGap;
        return somethingRuns_ ? std::optional(asked_ + period) : std::nullopt;
    }
    [[nodiscard]] bool IsTime(Moment now) const {
        const auto due = Due();
        return due && now >= *due;
    }

  private:
    Moment asked_;
    bool hasChanged_ = false;
    bool somethingRuns_ = false;
};

} // namespace kqu::platform

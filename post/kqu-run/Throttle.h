#pragma once

#include <chrono>
#include <deque>

namespace kqu::run {

/// Keeps posts to four a second. Changes go out a quarter of a second apart and at most three
/// within any second: the fourth place is kept for the last post, which so never has to wait.
class Throttle {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /// When the next change may go out: now or a later time.
    [[nodiscard]] Time Next(Time now) const;
    /// A post went out.
    void Posted(Time now);

  private:
    std::deque<Time> posts_;
};

} // namespace kqu::run

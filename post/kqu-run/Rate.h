#pragma once

#include "post/kqu-run/Row.h"

#include <chrono>
#include <deque>
#include <string>

namespace kqu::run {

/// How fast a tool is, from what it did in the last half minute.
class Rate {
  public:
    using Time = std::chrono::steady_clock::time_point;

    void Add(Time now, const Progress& progress);

    /// Speed and time left, "40 MB/s, 3 min left"; nothing in the first eight seconds. The time
    /// is coarse, since it is an estimate. After two minutes without any progress, "no progress
    /// for 2 min".
    [[nodiscard]] std::string Text(Time now) const;

  private:
    struct Sample {
        Time when;
        double share = -1, done = -1;
    };
    std::deque<Sample> samples_;
    int phase_ = 0;
    Time moved_{};
};

/// The progress with what its line of text ends in: the amounts, "310 MB of 900 MB", and the rate.
/// One that is complete has done the whole.
[[nodiscard]] Progress WithNumbers(Progress progress, const std::string& rate, bool isComplete);

} // namespace kqu::run

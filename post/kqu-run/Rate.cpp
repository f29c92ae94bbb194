#include "post/kqu-run/Rate.h"

#include <array>
#include <cmath>

namespace kqu::run {

namespace {
using Seconds = std::chrono::duration<double>;

constexpr std::chrono::seconds untilSteady{8};
constexpr std::chrono::seconds remembered{30};
constexpr std::chrono::minutes untilStuck{2};

std::string Left(double seconds) {
    constexpr double minute = 60, hour = 3600;
    if (seconds < minute)
        return "under 1 min left";
    if (seconds < 2 * hour) {
        const double step = seconds < 10 * minute ? 1 : 5;
        return std::to_string(std::lround(seconds / minute / step) * std::lround(step)) +
               " min left";
    }
    return std::to_string(std::lround(seconds / hour)) + " h left";
}

std::string Bytes(double bytes) {
    constexpr std::array<const char*, 5> units{" kB", " MB", " GB", " TB", " PB"};
    constexpr double step = 1000;
    std::size_t unit = 0;
    double value = bytes / step;
    for (; value >= step && unit + 1 < units.size(); ++unit)
        value /= step;
    // Two amounts of one job, such as 2.6 and 3.4 GB, must not look alike.
    return (value < 10 ? std::to_string(value).substr(0, 3) : std::to_string(std::llround(value))) +
           units.at(unit);
}

std::string Joint(const std::string& text, const std::string& more) {
    return text + (text.empty() || more.empty() ? "" : ", ") + more;
}
} // namespace

Progress WithNumbers(Progress progress, const std::string& rate, bool isComplete) {
    std::string numbers;
    if (isComplete && progress.done && progress.whole)
        progress.done = progress.whole;
    if (progress.done)
        numbers = Bytes(*progress.done);
    if (progress.done && progress.whole)
        numbers += " of " + Bytes(*progress.whole);
    numbers = Joint(numbers, rate);
    progress.text = Joint(progress.text, numbers);
    if (!progress.file.empty())
        progress.file = Joint(progress.file, numbers);
    return progress;
}

void Rate::Add(Time now, const Progress& progress) {
    const Sample sample{now, progress.share.value_or(-1), progress.done.value_or(-1)};
    const Sample first = samples_.empty() ? sample : samples_.front();
    // What was not known at first is measured from where it is.
    if (progress.phase != phase_ || (first.share < 0) != (sample.share < 0) ||
        (first.done < 0) != (sample.done < 0))
        samples_.clear();
    phase_ = progress.phase;
    if (samples_.empty() || sample.share > samples_.back().share ||
        sample.done > samples_.back().done)
        moved_ = now;
    else if (now - samples_.back().when < std::chrono::seconds(1))
        return;
    while (samples_.size() > 1 && now - samples_[1].when > remembered)
        samples_.pop_front();
    samples_.push_back(sample);
}

std::string Rate::Text(Time now) const {
    if (samples_.empty() || now - samples_.front().when < untilSteady)
        return {};
    const Sample& first = samples_.front();
    const Sample& last = samples_.back();
    if (last.share < 0 && last.done < 0)
        return {};
    if (now - moved_ >= untilStuck)
        return "no progress for " +
               std::to_string(std::chrono::floor<std::chrono::minutes>(now - moved_).count()) +
               " min";
    const double time = Seconds(now - first.when).count();
    std::string text;
    if (last.done > first.done)
        text = Bytes((last.done - first.done) / time) + "/s";
    if (last.share > first.share)
        text = Joint(text, Left((1 - last.share) / (last.share - first.share) * time));
    return text;
}

} // namespace kqu::run

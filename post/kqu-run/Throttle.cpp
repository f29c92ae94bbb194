#include "post/kqu-run/Throttle.h"

#include <algorithm>

namespace kqu::run {

namespace {
constexpr std::chrono::milliseconds apart{250};
constexpr std::chrono::milliseconds window{1000};
constexpr std::size_t mostInWindow = 3;
} // namespace

Throttle::Time Throttle::Next(Time now) const {
    Time next = now;
    if (!posts_.empty())
        next = std::max(next, posts_.back() + apart);
    if (posts_.size() >= mostInWindow)
        next = std::max(next, posts_[posts_.size() - mostInWindow] + window);
    return next;
}

void Throttle::Posted(Time now) {
    posts_.push_back(now);
    if (posts_.size() > mostInWindow)
        posts_.pop_front();
}

} // namespace kqu::run

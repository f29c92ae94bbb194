#pragma once

#include "platform/interfaces/EventSource.h"

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

namespace kqu::testing_support {

/// The least that an event loop is: watches sources and runs what they post.
class SourcePump final : public platform::EventQueue {
  public:
    explicit SourcePump(std::vector<platform::EventSource*> sources)
        : sources_(std::move(sources)) {}

    void Post(std::function<void()> delivery) override { queue_.push_back(std::move(delivery)); }

    /// Runs until the condition holds, or the deadline has passed. Whether it holds.
    bool Until(const std::function<bool()>& condition,
               std::chrono::milliseconds patience = std::chrono::seconds(20)) {
        const auto end = std::chrono::steady_clock::now() + patience;
        for (; !condition() && std::chrono::steady_clock::now() < end; ++rounds)
            if (!Round())
                Sleep();
        return condition();
    }
    void For(std::chrono::milliseconds time) {
        Until([] { return false; }, time);
    }

    std::size_t largestBatch = 0;
    std::size_t rounds = 0;

  private:
    bool Round() {
        bool more = false;
        for (platform::EventSource* source : sources_) {
            const std::size_t before = queue_.size();
            more = source->Collect(*this) || more;
            largestBatch = std::max(largestBatch, queue_.size() - before);
        }
        for (; !queue_.empty(); more = true) {
            const auto delivery = std::move(queue_.front());
            queue_.pop_front();
            delivery();
        }
        return more;
    }
    void Sleep() const {
        using namespace std::chrono_literals;
        const platform::Moment now = std::chrono::steady_clock::now();
        // Short, because conditions may lie outside of what the sources watch.
        platform::Moment until = now + 50ms;
        std::vector<pollfd> watched;
        for (const platform::EventSource* source : sources_) {
            watched.push_back(source->Watch());
            until = std::min(until, source->Due().value_or(until));
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(std::max(until - now, 0ns));
        poll(watched.data(), watched.size(), static_cast<int>(left.count()));
    }

    std::vector<platform::EventSource*> sources_;
    std::deque<std::function<void()>> queue_;
};

} // namespace kqu::testing_support

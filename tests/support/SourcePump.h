#pragma once

#include "platform/interfaces/EventSource.h"

#include <algorithm>
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
            Round();
        return condition();
    }
    void For(std::chrono::milliseconds time) {
        Until([] { return false; }, time);
    }

    std::size_t rounds = 0;

  private:
    void Round() {
        bool more = false;
        // Not for long, because conditions may lie outside of what the sources watch.
        const platform::Moment now = std::chrono::steady_clock::now();
        platform::Moment until = now + std::chrono::milliseconds(50);
        std::vector<pollfd> watched;
        for (platform::EventSource* source : sources_) {
            queue_.clear();
            more = source->Collect(*this) || !queue_.empty() || more;
            for (const auto& delivery : std::exchange(queue_, {}))
                delivery();
            watched.push_back(source->Watch());
            until = std::min(until, source->Due().value_or(until));
        }
        const auto left = std::max(std::chrono::nanoseconds(0), until - now);
        const auto whole = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        poll(watched.data(), watched.size(), more ? 0 : static_cast<int>(whole));
    }

    std::vector<platform::EventSource*> sources_;
    std::vector<std::function<void()>> queue_;
};

} // namespace kqu::testing_support

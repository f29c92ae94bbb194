#pragma once

#include "platform/interfaces/EventSource.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <poll.h>
#include <utility>
#include <vector>

namespace kqu::testing_support {

/// The least that an event loop is: watches sources and runs what they post. Tests look at how the
/// sources behave in it.
class SourcePump final : public platform::EventQueue {
  public:
    explicit SourcePump(std::vector<platform::EventSource*> sources)
        : sources_(std::move(sources)) {}

    void Post(std::function<void()> delivery) override { queue_.push_back(std::move(delivery)); }

    /// One round that takes in and delivers, without waiting. True if more could be had.
    bool Round() {
        bool more = false;
        for (platform::EventSource* source : sources_) {
            const std::size_t before = queue_.size();
            more = source->Collect(*this) || more;
            largestBatch = std::max(largestBatch, queue_.size() - before);
        }
        for (std::size_t left = queue_.size(); left > 0 && !queue_.empty(); --left) {
            const auto delivery = std::move(queue_.front());
            queue_.pop_front();
            delivery();
        }
        return more;
    }

    /// Runs until the condition holds, or the deadline has passed. Whether it holds.
    bool Until(const std::function<bool()>& condition,
               std::chrono::milliseconds patience = std::chrono::seconds(20)) {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            if (!Round() && !condition())
                Sleep(end);
            ++rounds;
        }
        return condition();
    }

    void For(std::chrono::milliseconds time) {
        Until([] { return false; }, time);
    }

    std::size_t largestBatch = 0;
    std::size_t rounds = 0;

  private:
    void Sleep(platform::Moment end) const {
        using namespace std::chrono_literals;
        // Short, because conditions may lie outside of what the sources watch.
        platform::Moment until =
            std::min(end, platform::Moment(std::chrono::steady_clock::now() + 100ms));
        std::vector<pollfd> watched;
        for (const platform::EventSource* source : sources_) {
            watched.push_back(source->Watch());
            if (const auto due = source->Due())
                until = std::min(until, *due);
        }
        const auto left = until - std::chrono::steady_clock::now();
        const auto whole =
            std::chrono::ceil<std::chrono::milliseconds>(std::max(left, decltype(left)(0)));
        poll(watched.data(), watched.size(), static_cast<int>(whole.count()));
    }

    std::vector<platform::EventSource*> sources_;
    std::deque<std::function<void()>> queue_;
};

} // namespace kqu::testing_support

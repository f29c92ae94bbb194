#pragma once

#include "platform/interfaces/Waiting.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>
#include <utility>

namespace kqu::platform {

/// Tells the echoes of a window's own requests for a place or a size from changes made by others.
///
/// A window manager carries requests out late, one by one or several as one, or not at all, and
/// may tell each result twice. So requests are kept until a value that matches one of them is
/// observed, which answers it and all before it. While answers are owed, any other value is only
/// remembered, and told if it is still there after a while. Whatever happens, what the owner
/// believes and what is there agree in the end.
template <class Value>
class EchoFilter {
  public:
    explicit EchoFilter(const Value& initial) : actual_(initial), believed_(initial) {}

    /// What is there, as far as it was observed.
    [[nodiscard]] const Value& Actual() const { return actual_; }
    /// What the owner asked for or was told last.
    [[nodiscard]] const Value& Believed() const { return believed_; }
    [[nodiscard]] std::optional<Moment> Due() const { return due_; }

    /// The owner's wish goes out.
    void Request(const Value& value, Moment now) {
        believed_ = value;
        if (value != actual_ || !outstanding_.empty())
            outstanding_.push_back({value, now});
        if (outstanding_.size() > mostOutstanding)
            outstanding_.pop_front();
        if (due_)
            due_ = now + patience;
    }

    /// A value was observed. The result is to be told to the owner as a change from outside.
    [[nodiscard]] std::optional<Value> Observe(const Value& value, Moment now) {
        const bool isNews = value != actual_;
        const bool isEcho = Acknowledge(value, now);
        if (value == believed_) {
            due_.reset();
            if (isNews)
                refused_.reset();
            return std::nullopt;
        }
        if (outstanding_.empty() && !isEcho)
            return isNews ? std::optional(Tell()) : std::nullopt;
        // An echo of an older request means that the newer ones are still to come. A value that
        // did not change may be told for any reason, a refusal among them.
        const bool mayWait = !isNews || (isEcho && !outstanding_.empty());
        if (isNews || !due_)
            due_ = now + (mayWait ? patience : settleTime);
        return std::nullopt;
    }

    /// The same for a value that is not to be told, whatever it is. True if it answers a request.
    bool Acknowledge(const Value& value, Moment now) {
        while (!outstanding_.empty() && outstanding_.front().since + memory < now)
            outstanding_.pop_front();
        if (std::exchange(actual_, value) == value)
            return false;
        const auto answered =
            std::find_if(outstanding_.begin(), outstanding_.end(),
                         [&](const Asked& asked) { return asked.value == value; });
        if (answered == outstanding_.end())
            return false;
        outstanding_.erase(outstanding_.begin(), answered + 1);
        return true;
    }

    /// When Due has come: what is to be told now, if anything.
    [[nodiscard]] std::optional<Value> Settle(Moment now) {
        if (!due_ || now < *due_)
            return std::nullopt;
        due_.reset();
        // A manager that insists is told once; an owner that insists as well is left its wish.
        if (actual_ == believed_ || refused_ == std::pair(believed_, actual_))
            return std::nullopt;
        return Tell();
    }

    /// Gives up on what is due; the next observation may make something due again.
    void StopWaiting() { due_.reset(); }

    /// From here on the value is taken for what is there, and nothing is owed.
    void Assume(const Value& value) {
        actual_ = value;
        believed_ = value;
        outstanding_.clear();
        due_.reset();
    }

  private:
    struct Asked {
        Value value;
        Moment since;
    };

    static constexpr std::chrono::milliseconds settleTime{250};
    static constexpr std::chrono::seconds patience{2};
    static constexpr std::chrono::seconds memory{10};
    static constexpr std::size_t mostOutstanding = 256;

    const Value& Tell() {
        refused_ = std::pair(believed_, actual_);
        believed_ = actual_;
        due_.reset();
        return believed_;
    }

    Value actual_;
    Value believed_;
    std::deque<Asked> outstanding_;
    std::optional<Moment> due_;
    /// What was believed and what was there instead when the owner was told last.
    std::optional<std::pair<Value, Value>> refused_;
};

} // namespace kqu::platform

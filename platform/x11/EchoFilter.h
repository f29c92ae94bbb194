#pragma once

#include "platform/interfaces/Waiting.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace kqu::platform {

/// Tells the echoes of a window's own requests for a place from changes made by others.
///
/// A window manager carries requests out late, several as one, or not at all, and may report each
/// result twice. So nothing is reported until the place has been quiet for a while, and for longer
/// after an own request. In the end the owner believes what is there.
template <class Value>
class EchoFilter {
  public:
    explicit EchoFilter(const Value& initial) : actual_(initial), believed_(initial) {}

    /// What is there, as far as it was observed.
    [[nodiscard]] const Value& Actual() const { return actual_; }
    /// What the owner asked for or was notified of last.
    [[nodiscard]] const Value& Believed() const { return believed_; }
    /// When Settle is to be called.
    [[nodiscard]] std::optional<Moment> Due() const { return due_; }

    /// The owner's wish goes out.
    void Request(const Value& value, Moment now) {
        believed_ = value;
        patientUntil_ = now + patience;
        due_ = value == actual_ ? std::nullopt : std::optional(patientUntil_);
    }

    /// A value was observed.
    void Observe(const Value& value, Moment now) {
        const bool isNews = value != actual_;
        Acknowledge(value);
        if (isNews && value != believed_)
            due_ = std::max(now + settleTime, patientUntil_);
    }

    /// The same for a value that is not to be reported, whatever it is.
    void Acknowledge(const Value& value) {
        actual_ = value;
        if (actual_ == believed_)
            due_.reset();
    }

    /// When Due has come: what is to be reported to the owner, if anything.
    [[nodiscard]] std::optional<Value> Settle(Moment now) {
        if (!due_ || now < *due_)
            return std::nullopt;
        due_.reset();
        believed_ = actual_;
        return actual_;
    }

    /// From here on the value is what is there, and nothing is owed.
    void Assume(const Value& value) {
        actual_ = believed_ = value;
        due_.reset();
    }

  private:
    static constexpr std::chrono::milliseconds settleTime{250};
    static constexpr std::chrono::seconds patience{2};

    Value actual_;
    Value believed_;
    Moment patientUntil_{};
    std::optional<Moment> due_;
};

} // namespace kqu::platform

#include "platform/power_messages/SystemPowerMessages.h"

#include "platform/text/PlainText.h"

#include <string>
#include <utility>

namespace kqu::platform {

namespace {
/// Texts of tools may be of any length and hold any bytes; a D-Bus string may not.
constexpr std::size_t longestReason = 200;
} // namespace

SystemPowerMessages::SystemPowerMessages(std::chrono::milliseconds retryAfter)
    : loginManager_(retryAfter, [this](std::uint32_t message) { Deliver(message); }),
      sessionServices_(SessionServices(retryAfter)) {}

Registration SystemPowerMessages::Listen(Listener listener, Reason reason) {
    const auto audience =
        std::make_shared<Audience>(Audience{std::move(listener), std::move(reason)});
    audience_ = audience;
    hasChanged_ = true;
    loginManager_.Connection().Begin();
    sessionServices_.Connection().Begin();
    return Registration([this, audience] {
        if (audience_ != audience)
            return;
        audience_ = nullptr;
        Forgo();
    });
}

std::vector<EventSource*> SystemPowerMessages::Sources() {
    return {&loginManager_.Connection(), &sessionServices_.Connection(), this};
}

std::optional<Moment> SystemPowerMessages::Due() const {
    if (!audience_ || isQuestionPosted_)
        return std::nullopt;
    if (hasChanged_)
        return asked_ + leastGap;
    // While nothing runs the answer can't change by itself, and nobody is woken for it.
    return somethingRuns_ ? std::optional(asked_ + questionPeriod) : std::nullopt;
}

bool SystemPowerMessages::Collect(EventQueue& queue) {
    if (const auto due = Due(); due && MonotonicNow() >= *due) {
        isQuestionPosted_ = true;
        queue.Post([this] { Ask(); });
    }
    return false;
}

void SystemPowerMessages::Ask() {
    isQuestionPosted_ = false;
    asked_ = MonotonicNow();
    hasChanged_ = false;
    const auto audience = audience_;
    if (!audience)
        return;
    const bool objects = Deliver(canSystemSleep);
    const PlainText reason(audience->reason());
    somethingRuns_ = reason.Length() > 0;
    if (!objects || !audience_)
        return Forgo();
    const std::string why(StartOf(reason.utf8, longestReason));
    loginManager_.Want(why);
    sessionServices_.Want(why);
}

/// Returns whether the listener objects.
bool SystemPowerMessages::Deliver(std::uint32_t message) const {
    const auto audience = audience_;
    return audience && audience->listener(static_cast<std::int32_t>(message));
}

void SystemPowerMessages::Forgo() {
    loginManager_.Forgo();
    sessionServices_.Forgo();
}

} // namespace kqu::platform

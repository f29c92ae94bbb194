#include "platform/power_messages/Inhibitor.h"

#include <algorithm>
#include <utility>

namespace kqu::platform {

Inhibitor::Inhibitor(BusConnection& connection, InhibitorService service)
    : connection_(connection), service_(std::move(service)) {}

void Inhibitor::Want(const std::string& why) {
    isWanted_ = true;
    why_ = why;
    AskIfDue();
}

void Inhibitor::Forgo() {
    isWanted_ = false;
    grant_.Drop();
    grantedFor_.reset();
    notBefore_ = Moment();
    nextPause_ = pause;
}

void Inhibitor::Retry() {
    notBefore_ = Moment();
    AskIfDue();
}

/// The rule comes before the question, so that an owner who comes or goes in between is noticed.
void Inhibitor::Began() {
    connection_.AskBus("AddMatch", OwnerRule(service_.object.name));
    ownerQuestion_ = connection_.AskBus("GetNameOwner", service_.object.name);
}

void Inhibitor::Received(sd_bus_message& message) {
    if (const auto change = OwnerChangeIn(message)) {
        if (change->name == service_.object.name)
            SetOwner(change->owner);
        return;
    }
    std::uint64_t question = 0;
    if (sd_bus_message_get_reply_cookie(&message, &question) < 0)
        return;
    const char* owner = nullptr;
    if (question == request_)
        TakeAnswer(message);
    else if (question == ownerQuestion_ && sd_bus_message_is_method_error(&message, nullptr) == 0 &&
             sd_bus_message_read_basic(&message, SD_BUS_TYPE_STRING, &owner) > 0)
        SetOwner(owner);
}

void Inhibitor::Lost() {
    // Before another bus is there: to whom it would be given back is known by a name on this one.
    grant_.Drop();
    ownerQuestion_ = 0;
    SetOwner("");
}

/// The grant of a former owner stays until its successor is there: a login manager that is started
/// anew still honours it.
void Inhibitor::SetOwner(std::string_view owner) {
    if (owner == owner_)
        return;
    owner_ = owner;
    request_ = 0;
    grantedFor_.reset();
    nextPause_ = pause;
    Retry();
}

void Inhibitor::AskIfDue() {
    const Moment now = MonotonicNow();
    if (!isWanted_ || grantedFor_ == why_ || owner_.empty() || request_ != 0 || now < notBefore_)
        return;
    const BusMessage call = connection_.CallOf(
        {owner_.c_str(), service_.object.path, service_.object.interface}, "Inhibit");
    if (!call || service_.writeArguments(*call, why_.c_str()) < 0)
        return;
    notBefore_ = now + pause;
    askedFor_ = why_;
    request_ = connection_.Ask(call);
}

void Inhibitor::TakeAnswer(sd_bus_message& answer) {
    request_ = 0;
    std::optional<Registration> grant;
    if (sd_bus_message_is_method_error(&answer, nullptr) == 0)
        grant = service_.readGrant(answer, connection_);
    // A grant that arrives too late is given back as it leaves this function.
    if (!isWanted_)
        return;
    if (!grant) {
        notBefore_ = MonotonicNow() + nextPause_;
        nextPause_ = std::min(2 * nextPause_, longestPause);
        return;
    }
    grant_ = std::move(*grant);
    grantedFor_ = askedFor_;
    nextPause_ = pause;
}

} // namespace kqu::platform

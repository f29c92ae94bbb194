#include "platform/dbus/PostedSignals.h"

#include "platform/dbus/WireDecoder.h"

#include <string_view>
#include <utility>

namespace kqu::platform {

namespace {
std::string SubscriptionRule() {
    return std::string("type='signal',interface='") + postedInterface + "',member='" +
           postedMember + "'";
}
} // namespace

PostedSignals::PostedSignals(HeardSenders heard, BusConnection::FindAddress findAddress,
                             std::chrono::milliseconds retryAfter,
                             std::shared_ptr<const DistributedNotifications::Listener> listener)
    : listener_(std::move(listener)), connection_(findAddress, retryAfter, *this) {
    if (heard == HeardSenders::RootAndOwn)
        trust_.emplace(*this);
}

/// The rule is sent together with the greeting, right behind it: the bus routes to us whatever is
/// posted after it has accepted us.
void PostedSignals::Began() {
    subscription_ = connection_.AskBus("AddMatch", SubscriptionRule());
}

void PostedSignals::Lost() {
    listeningSince_.reset();
    hasAskedForName_ = false;
    questions_.clear();
    if (trust_)
        trust_->Clear();
}

void PostedSignals::Received(sd_bus_message& message, EventQueue& queue) {
    if (sd_bus_message_is_signal(&message, postedInterface, postedMember) > 0)
        TakePosted(message, queue);
    else if (const auto change = OwnerChangeIn(message); change && change->owner.empty())
        TakeLeaving(change->name);
    else if (SenderOf(message) == busDaemon.name)
        TakeAnswer(message, queue);
}

void PostedSignals::TakePosted(sd_bus_message& message, EventQueue& queue) {
    using Opinion = SenderTrust::Opinion;
    const std::string_view sender = SenderOf(message);
    const Opinion opinion = trust_ ? trust_->Of(sender) : Opinion::Heard;
    if (opinion == Opinion::Heard)
        Deliver(DecodePosted(message), queue);
    else if (opinion == Opinion::Open && !sender.empty())
        trust_->Hold(sender, DecodePosted(message));
}

void PostedSignals::TakeAnswer(sd_bus_message& message, EventQueue& queue) {
    std::uint64_t question = 0;
    if (sd_bus_message_get_reply_cookie(&message, &question) < 0)
        return;
    const bool isError = sd_bus_message_is_method_error(&message, nullptr) > 0;
    if (question == subscription_ && isError)
        connection_.GiveUp();
    else if (question == subscription_)
        listeningSince_ = MonotonicNow();
    const auto asked = questions_.extract(question);
    if (!asked)
        return;
    std::uint32_t user = 0;
    const bool isKnown =
        !isError && sd_bus_message_read_basic(&message, SD_BUS_TYPE_UINT32, &user) > 0;
    for (PostedNotification& posted :
         trust_->Answered(asked.mapped(), isKnown ? std::optional<uid_t>(user) : std::nullopt))
        Deliver(std::move(posted), queue);
}

void PostedSignals::TakeLeaving(std::string_view sender) {
    if (trust_)
        trust_->Left(sender);
}

void PostedSignals::Deliver(PostedNotification posted, EventQueue& queue) const {
    if (*listener_)
        queue.Post([listener = listener_, posted = std::move(posted)] {
            // A copy, because the listener may take its registration back while it runs.
            if (const auto receive = *listener)
                receive(posted);
        });
}

void PostedSignals::AskForUser(const std::string& sender) {
    // In this order: a sender who leaves in between is either announced or not found.
    connection_.AskBus("AddMatch", OwnerRule(sender));
    questions_.emplace(connection_.AskBus("GetConnectionUnixUser", sender), sender);
}

void PostedSignals::AskForName(const char* name) {
    constexpr std::uint32_t queueForIt = 0;
    hasAskedForName_ = true;
    const BusMessage call = connection_.CallOf(busDaemon, "RequestName");
    if (call && sd_bus_message_append(call.get(), "su", name, queueForIt) >= 0)
        connection_.Notify(call);
}

void PostedSignals::Forget(const std::string& sender) {
    connection_.AskBus("RemoveMatch", OwnerRule(sender));
}

} // namespace kqu::platform

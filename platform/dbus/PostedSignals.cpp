#include "platform/dbus/PostedSignals.h"

#include "platform/dbus/WireDecoder.h"

#include <string_view>
#include <utility>

namespace kqu::platform {

namespace {
using Message = CPointer<sd_bus_message, sd_bus_message_unref>;

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

std::string SubscriptionRule() {
    return std::string("type='signal',interface='") + postedInterface + "',member='" +
           postedMember + "'";
}

/// Only of this one sender, so that nobody else's coming and going wakes the process.
std::string LeavingRule(const std::string& sender) {
    return std::string("type='signal',sender='") + busName + "',interface='" + busName +
           "',member='NameOwnerChanged',arg0='" + sender + "'";
}

bool IsFromBus(sd_bus_message& message) {
    const char* sender = sd_bus_message_get_sender(&message);
    return sender != nullptr && std::string_view(sender) == busName;
}

/// A call to the bus itself.
Message CallOf(sd_bus& bus, const char* member, const std::string& argument) {
    sd_bus_message* made = nullptr;
    const int result =
        sd_bus_message_new_method_call(&bus, &made, busName, busPath, busName, member);
    Message call(made);
    if (result < 0 || sd_bus_message_append_basic(made, SD_BUS_TYPE_STRING, argument.c_str()) < 0)
        return nullptr;
    return call;
}
} // namespace

PostedSignals::PostedSignals(HeardSenders heard, BusConnection::FindAddress findAddress,
                             std::chrono::milliseconds retryAfter,
                             std::shared_ptr<Listeners> listeners)
    : listeners_(std::move(listeners)), connection_(findAddress, retryAfter, *this) {
    if (heard == HeardSenders::RootAndOwn)
        trust_.emplace(*this);
}

/// The rule is the first thing that the bus is told after the greeting, in the same breath: what is
/// posted once the bus knows us is routed to us.
void PostedSignals::Began(sd_bus& bus) {
    bus_ = &bus;
    subscription_ = Ask("AddMatch", SubscriptionRule());
}

void PostedSignals::Lost() {
    bus_ = nullptr;
    listeningSince_.reset();
    hasAskedForName_ = false;
    questions_.clear();
    if (trust_)
        trust_->Clear();
}

void PostedSignals::Received(sd_bus_message& message, EventQueue& queue) {
    std::uint8_t type = 0;
    if (sd_bus_message_get_type(&message, &type) < 0)
        return;
    switch (type) {
    case SD_BUS_MESSAGE_SIGNAL:
        if (sd_bus_message_is_signal(&message, postedInterface, postedMember) > 0)
            TakePosted(message, queue);
        else if (IsFromBus(message) &&
                 sd_bus_message_is_signal(&message, busName, "NameOwnerChanged") > 0)
            TakeOwnerChange(message);
        return;
    case SD_BUS_MESSAGE_METHOD_CALL:
        // Nobody waits in vain for an answer from a program that offers nothing.
        sd_bus_reply_method_errorf(&message, SD_BUS_ERROR_UNKNOWN_OBJECT, "No such object");
        return;
    default:
        if (IsFromBus(message))
            TakeAnswer(message, queue);
    }
}

void PostedSignals::TakePosted(sd_bus_message& message, EventQueue& queue) {
    if (!trust_) {
        Deliver(DecodePosted(message), queue);
        return;
    }
    const char* sender = sd_bus_message_get_sender(&message);
    if (sender == nullptr)
        return;
    switch (trust_->Of(sender)) {
    case SenderTrust::Opinion::Heard:
        Deliver(DecodePosted(message), queue);
        return;
    case SenderTrust::Opinion::Open:
        trust_->Hold(sender, DecodePosted(message));
        return;
    case SenderTrust::Opinion::Refused:
        return;
    }
}

void PostedSignals::TakeAnswer(sd_bus_message& message, EventQueue& queue) {
    std::uint64_t question = 0;
    if (sd_bus_message_get_reply_cookie(&message, &question) < 0)
        return;
    const bool isError = sd_bus_message_is_method_error(&message, nullptr) > 0;
    if (question == subscription_ && isError)
        connection_.GiveUp();
    else if (question == subscription_)
        listeningSince_ = std::chrono::steady_clock::now();
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

void PostedSignals::TakeOwnerChange(sd_bus_message& message) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (trust_ && sd_bus_message_read(&message, "sss", &name, &before, &now) > 0 && *now == '\0')
        trust_->Left(name);
}

void PostedSignals::Deliver(PostedNotification posted, EventQueue& queue) const {
    if (!listeners_->IsEmpty())
        queue.Post(
            [listeners = listeners_, posted = std::move(posted)] { listeners->Deliver(posted); });
}

void PostedSignals::AskForUser(const std::string& sender) {
    // In this order: a sender who leaves in between is either announced or not found.
    Ask("AddMatch", LeavingRule(sender));
    questions_.emplace(Ask("GetConnectionUnixUser", sender), sender);
}

void PostedSignals::AskForName(const char* name) {
    constexpr std::uint32_t queueForIt = 0;
    hasAskedForName_ = true;
    const Message call = CallOf(*bus_, "RequestName", name);
    // Without a place for its serial number the call is one that wants no answer.
    if (call && sd_bus_message_append_basic(call.get(), SD_BUS_TYPE_UINT32, &queueForIt) >= 0)
        static_cast<void>(sd_bus_send(bus_, call.get(), nullptr));
}

void PostedSignals::Forget(const std::string& sender) {
    const Message call = CallOf(*bus_, "RemoveMatch", LeavingRule(sender));
    if (!call || sd_bus_send(bus_, call.get(), nullptr) < 0)
        connection_.GiveUp();
}

/// Sends the bus a question and gives its serial number.
std::uint64_t PostedSignals::Ask(const char* member, const std::string& argument) {
    std::uint64_t serial = 0;
    const Message call = CallOf(*bus_, member, argument);
    if (!call || sd_bus_send(bus_, call.get(), &serial) < 0)
        connection_.GiveUp();
    return serial;
}

} // namespace kqu::platform

#include "platform/dbus/BusConnection.h"

#include <cstdint>
#include <utility>

namespace kqu::platform {

std::string_view SenderOf(sd_bus_message& message) {
    const char* sender = sd_bus_message_get_sender(&message);
    return sender == nullptr ? std::string_view() : sender;
}

std::string OwnerRule(const std::string& name) {
    return std::string("type='signal',sender='") + busDaemon.name + "',interface='" +
           busDaemon.interface + "',member='NameOwnerChanged',arg0='" + name + "'";
}

std::optional<OwnerChange> OwnerChangeIn(sd_bus_message& message) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* owner = nullptr;
    if (SenderOf(message) != busDaemon.name ||
        sd_bus_message_is_signal(&message, busDaemon.interface, "NameOwnerChanged") <= 0 ||
        sd_bus_message_rewind(&message, 1) < 0 ||
        sd_bus_message_read(&message, "sss", &name, &before, &owner) <= 0)
        return std::nullopt;
    return OwnerChange{name, owner};
}

BusConnection::BusConnection(FindAddress findAddress, std::chrono::milliseconds retryAfter,
                             Client& client)
    : findAddress_(findAddress), retryAfter_(retryAfter), client_(client) {}

void BusConnection::Begin() {
    if (wanted_)
        return;
    wanted_ = true;
    Connect();
}

pollfd BusConnection::Watch() const {
    const int descriptor = bus_ ? sd_bus_get_fd(bus_.get()) : -1;
    const int events = bus_ ? sd_bus_get_events(bus_.get()) : -1;
    if (descriptor < 0 || events < 0)
        return {-1, 0, 0};
    return {descriptor, static_cast<short>(events), 0};
}

std::optional<Moment> BusConnection::Due() const {
    if (!wanted_)
        return std::nullopt;
    if (!bus_)
        return retryAt_;
    // Microseconds of the clock that steady_clock is; zero where something waits already.
    std::uint64_t microseconds = 0;
    if (sd_bus_get_timeout(bus_.get(), &microseconds) < 0)
        return Moment();
    constexpr auto latest = static_cast<std::uint64_t>(Moment::max().time_since_epoch().count());
    if (microseconds > latest / 1000)
        return std::nullopt;
    return Moment(std::chrono::microseconds(microseconds));
}

bool BusConnection::Collect(EventQueue& queue) {
    if (!bus_ && wanted_ && MonotonicNow() >= retryAt_)
        Connect();
    const Moment end = MonotonicNow() + timePerCollect;
    for (int count = 0; bus_ && count < messagesPerCollect && MonotonicNow() < end; ++count) {
        sd_bus_message* received = nullptr;
        const int result = sd_bus_process(bus_.get(), &received);
        if (const BusMessage message(received); message)
            Take(*message, queue);
        if (result < 0 || givenUp_)
            Lose();
        if (result <= 0)
            return false;
    }
    return bus_ != nullptr;
}

void BusConnection::Connect() {
    bus_ = Open();
    if (bus_)
        client_.Began();
    if (!bus_ || givenUp_)
        Lose();
}

void BusConnection::Lose() {
    givenUp_ = false;
    bus_.reset();
    retryAt_ = MonotonicNow() + retryAfter_;
    client_.Lost();
}

void BusConnection::Take(sd_bus_message& message, EventQueue& queue) {
    std::uint8_t type = 0;
    if (sd_bus_message_get_type(&message, &type) < 0)
        return;
    if (type == SD_BUS_MESSAGE_METHOD_CALL)
        // A caller that got no answer would wait for its whole timeout.
        sd_bus_reply_method_errorf(&message, SD_BUS_ERROR_UNKNOWN_OBJECT, "No such object");
    else
        client_.Received(message, queue);
}

BusMessage BusConnection::CallOf(const BusObject& object, const char* member) const {
    sd_bus_message* made = nullptr;
    if (!bus_ || sd_bus_message_new_method_call(bus_.get(), &made, object.name, object.path,
                                                object.interface, member) < 0)
        return nullptr;
    BusMessage call(made);
    static_cast<void>(sd_bus_message_set_auto_start(made, 0));
    return call;
}

std::uint64_t BusConnection::Ask(const BusMessage& call) {
    std::uint64_t serial = 0;
    if (call && sd_bus_send(bus_.get(), call.get(), &serial) < 0)
        GiveUp();
    return serial;
}

std::uint64_t BusConnection::AskBus(const char* member, const std::string& argument) {
    const BusMessage call = CallOf(busDaemon, member);
    if (call)
        static_cast<void>(
            sd_bus_message_append_basic(call.get(), SD_BUS_TYPE_STRING, argument.c_str()));
    return Ask(call);
}

void BusConnection::Notify(const BusMessage& call) {
    // Without a place for its serial number the call is marked as one that wants no answer.
    if (call && sd_bus_send(bus_.get(), call.get(), nullptr) < 0)
        GiveUp();
}

/// A bus that was begun to be connected, or none.
BusConnection::Bus BusConnection::Open() const {
    sd_bus* made = nullptr;
    if (sd_bus_new(&made) < 0)
        return nullptr;
    Bus bus(made);
    const std::string address = findAddress_();
    const bool begun = sd_bus_set_address(bus.get(), address.c_str()) >= 0 &&
                       sd_bus_set_bus_client(bus.get(), 1) >= 0 &&
                       sd_bus_set_exit_on_disconnect(bus.get(), 0) >= 0 &&
                       sd_bus_start(bus.get()) >= 0;
    return begun ? std::move(bus) : nullptr;
}

} // namespace kqu::platform

#include "platform/dbus/BusConnection.h"

#include <cstdint>
#include <utility>

namespace kqu::platform {

namespace {
using Message = CPointer<sd_bus_message, sd_bus_message_unref>;

Moment Now() {
    return std::chrono::steady_clock::now();
}
} // namespace

BusConnection::BusConnection(FindAddress findAddress, std::chrono::milliseconds retryAfter,
                             Client& client)
    : findAddress_(findAddress), retryAfter_(retryAfter), client_(client) {}

BusConnection::~BusConnection() = default;

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
    if (!bus_ && wanted_ && Now() >= retryAt_)
        Connect();
    const Moment end = Now() + timePerCollect;
    for (int count = 0; bus_ && count < messagesPerCollect && Now() < end; ++count) {
        sd_bus_message* received = nullptr;
        const int result = sd_bus_process(bus_.get(), &received);
        const Message message(received);
        if (message)
            client_.Received(*message, queue);
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
        client_.Began(*bus_);
    if (!bus_ || givenUp_)
        Lose();
}

void BusConnection::Lose() {
    givenUp_ = false;
    bus_.reset();
    retryAt_ = Now() + retryAfter_;
    client_.Lost();
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

#include "platform/dbus/BusConnection.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace kqu::platform {

namespace {
/// At most this many messages in one go, so that a flood leaves room for everything else.
constexpr int messagesPerCollect = 512;

Moment Now() {
    return std::chrono::steady_clock::now();
}

/// The session bus where the environment doesn't name one, which happens when the program was
/// started as another user: where the user's own service manager puts it.
BusPointer OpenUsersBus() {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0)
        return nullptr;
    BusPointer owned(bus);
    const std::string address = "unix:path=/run/user/" + std::to_string(getuid()) + "/bus";
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0)
        return nullptr;
    return owned;
}

BusPointer OpenBus(Bus which) {
    sd_bus* bus = nullptr;
    // Neither call waits for an answer of the bus.
    const int result = which == Bus::Session ? sd_bus_open_user(&bus) : sd_bus_open_system(&bus);
    if (result >= 0)
        return BusPointer(bus);
    return which == Bus::Session ? OpenUsersBus() : nullptr;
}
} // namespace

BusConnection::BusConnection(Bus which, BusClient& client) : which_(which), client_(client) {}

BusConnection::~BusConnection() = default;

void BusConnection::Open() {
    if (!std::exchange(wanted_, true))
        Connect();
}

void BusConnection::Connect() {
    bus_ = OpenBus(which_);
    if (!bus_) {
        retryAt_ = Now() + retryPeriod;
        return;
    }
    sd_bus_set_exit_on_disconnect(bus_.get(), 0);
    client_.Connected(bus_.get());
}

void BusConnection::Lose() {
    client_.Disconnected();
    bus_.reset();
    retryAt_ = Now() + retryPeriod;
}

pollfd BusConnection::Watch() const {
    if (!bus_)
        return {-1, 0, 0};
    const int events = sd_bus_get_events(bus_.get());
    return {sd_bus_get_fd(bus_.get()), static_cast<short>(events < 0 ? POLLIN : events), 0};
}

std::optional<Moment> BusConnection::Due() const {
    if (!wanted_)
        return std::nullopt;
    if (!bus_)
        return retryAt_;
    std::uint64_t microseconds = 0;
    if (sd_bus_get_timeout(bus_.get(), &microseconds) < 0 ||
        microseconds == std::numeric_limits<std::uint64_t>::max())
        return std::nullopt;
    return Moment(std::chrono::microseconds(static_cast<std::int64_t>(microseconds)));
}

bool BusConnection::Collect(EventQueue& queue) {
    if (!wanted_)
        return false;
    if (!bus_ && Now() >= retryAt_)
        Connect();
    const bool more = bus_ && Process();
    client_.Deliver(queue);
    if (raised_)
        std::rethrow_exception(std::exchange(raised_, nullptr));
    return more;
}

bool BusConnection::Process() {
    for (int i = 0; i < messagesPerCollect; ++i) {
        const int result = sd_bus_process(bus_.get(), nullptr);
        if (result == 0)
            return false;
        if (result < 0) {
            Lose();
            return false;
        }
    }
    return true;
}

} // namespace kqu::platform

#include "post/Poster.h"

#include "platform/CDeleter.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>

namespace kqu::post {

namespace {
using platform::CPointer;
using BusPointer = CPointer<sd_bus, sd_bus_flush_close_unref>;
using MessagePointer = CPointer<sd_bus_message, sd_bus_message_unref>;

constexpr const char* path = "/com/brackwater/DistributedNotifications";
constexpr const char* interfaceName = "com.brackwater.DistributedNotifications";
constexpr const char* member = "Posted";

/// Listeners on the system bus ask who posted, and the bus can only tell while the poster is there.
/// Nothing tells the poster when they have asked; this is a hundred times what it takes.
constexpr std::chrono::milliseconds stay{500};

void Check(int result, const std::string& what) {
    if (result < 0)
        throw PostError(what + ": " + std::strerror(-result));
}

BusPointer Connect(bool onSystemBus) {
    sd_bus* bus = nullptr;
    const int result = onSystemBus ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus);
    Check(result, onSystemBus ? "no system bus" : "no session bus");
    return BusPointer(bus);
}

MessagePointer MakeSignal(sd_bus* bus, const Request& request) {
    const std::string failed = "the message can't be made";
    sd_bus_message* signal = nullptr;
    Check(sd_bus_message_new_signal(bus, &signal, path, interfaceName, member), failed);
    MessagePointer owned(signal);
    const std::string object(request.tool->object);
    Check(sd_bus_message_append(signal, "ss", request.name.c_str(), object.c_str()), failed);
    Check(sd_bus_message_open_container(signal, SD_BUS_TYPE_ARRAY, "{sv}"), failed);
    for (const auto& [key, value] : request.values)
        Check(sd_bus_message_append(signal, "{sv}", key.c_str(), "s", value.c_str()), failed);
    Check(sd_bus_message_close_container(signal), failed);
    return owned;
}

/// The bus answers in order: its answer to a question that was asked behind the signal tells that
/// it has taken the signal.
void AwaitTaken(sd_bus* bus) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    const int result = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                          "org.freedesktop.DBus", "GetId", &error, nullptr, "");
    sd_bus_error_free(&error);
    Check(result, "the bus has not taken the message");
}
} // namespace

void Post(const Request& request) {
    const BusPointer bus = Connect(request.onSystemBus);
    const MessagePointer signal = MakeSignal(bus.get(), request);
    Check(sd_bus_send(bus.get(), signal.get(), nullptr), "the bus has not taken the message");
    AwaitTaken(bus.get());
    if (request.onSystemBus)
        std::this_thread::sleep_for(stay);
}

} // namespace kqu::post

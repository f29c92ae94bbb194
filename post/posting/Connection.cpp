#include "post/posting/Connection.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace kqu::post {

namespace {
/// Tools that are started on a schedule have no session's environment; the user's bus is at its
/// usual place all the same.
bool IsSessionBusNamed() {
    return secure_getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr ||
           secure_getenv("XDG_RUNTIME_DIR") != nullptr;
}

BusPointer Open(Bus kind, const char* failure) {
    sd_bus* bus = nullptr;
    if (kind == Bus::System || IsSessionBusNamed()) {
        Check(kind == Bus::System ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus), failure);
        return BusPointer(bus);
    }
    Check(sd_bus_new(&bus), failure);
    BusPointer owned(bus);
    const std::string address = "unix:path=/run/user/" + std::to_string(getuid()) + "/bus";
    Check(sd_bus_set_address(bus, address.c_str()), failure);
    Check(sd_bus_set_bus_client(bus, 1), failure);
    Check(sd_bus_start(bus), failure);
    return owned;
}
} // namespace

void Check(int result, const std::string& what) {
    if (result < 0)
        throw PostError(what + ": " + std::strerror(-result));
}

Connection Connect(Bus kind, std::chrono::milliseconds most) {
    const char* const failure = kind == Bus::System ? "no system bus" : "no session bus";
    const auto deadline = std::chrono::steady_clock::now() + most;
    BusPointer bus = Open(kind, failure);
    while (sd_bus_is_ready(bus.get()) == 0) {
        const int more = sd_bus_process(bus.get(), nullptr);
        Check(more, failure);
        const std::chrono::microseconds left =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline -
                                                                  std::chrono::steady_clock::now());
        if (left.count() <= 0)
            throw SilentBus(std::string(failure) + ": it does not answer");
        if (more == 0)
            Check(sd_bus_wait(bus.get(), static_cast<std::uint64_t>(left.count())), failure);
    }
    return {kind, std::move(bus)};
}

bool Questions::HasOwner(const char* name) {
    const MessagePointer reply =
        Call({busName, "/org/freedesktop/DBus", busName}, "NameHasOwner", "s", name);
    int isOwned = 0;
    return reply && sd_bus_message_read_basic(reply.get(), 'b', &isOwned) > 0 && isOwned != 0;
}

bool Questions::MayAsk() {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
        deadline_ - std::chrono::steady_clock::now());
    return left.count() > 0 &&
           sd_bus_set_method_call_timeout(&bus_, static_cast<std::uint64_t>(left.count())) >= 0;
}

} // namespace kqu::post

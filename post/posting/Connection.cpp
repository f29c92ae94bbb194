#include "post/posting/Connection.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

namespace kqu::post {

namespace {
void Check(int result, const char* what) {
    if (result < 0)
        throw PostError(std::string(what) + ": " + std::strerror(-result));
}

/// Tools that are started on a schedule have no session's environment; the user's bus is at its
/// usual place all the same.
bool IsSessionBusNamed() {
    return secure_getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr ||
           secure_getenv("XDG_RUNTIME_DIR") != nullptr;
}

BusPointer ConnectToUsersBus() {
    sd_bus* bus = nullptr;
    Check(sd_bus_new(&bus), "no session bus");
    BusPointer owned(bus);
    const std::string address = "unix:path=/run/user/" + std::to_string(getuid()) + "/bus";
    Check(sd_bus_set_address(bus, address.c_str()), "no session bus");
    Check(sd_bus_set_bus_client(bus, 1), "no session bus");
    Check(sd_bus_start(bus), "no session bus");
    return owned;
}
} // namespace

Connection Connect(Bus kind) {
    const bool onSystemBus = kind == Bus::System;
    if (!onSystemBus && !IsSessionBusNamed())
        return {kind, ConnectToUsersBus()};
    sd_bus* bus = nullptr;
    const int result = onSystemBus ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus);
    Check(result, onSystemBus ? "no system bus" : "no session bus");
    return {kind, BusPointer(bus)};
}

} // namespace kqu::post

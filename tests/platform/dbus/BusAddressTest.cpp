#include "platform/dbus/BusAddress.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace kqu::platform {
namespace {

void Set(const char* name, const std::string& value) {
    value == "unset" ? unsetenv(name) : setenv(name, value.c_str(), 1);
}

TEST(BusAddress, IsThatOfTheUserOfTheProcess) {
    const std::string own = "/run/user/" + std::to_string(getuid());
    const std::string another = "/run/user/" + std::to_string(getuid() + 1);
    const std::string ownBus = "unix:path=" + own + "/bus";
    const std::string two = "unix:abstract=/tmp/x,guid=0;tcp:host=h";
    // The variable with the address, that with the runtime folder, and what comes out of them.
    const std::string cases[][3] = {
        {"unset", "unset", ownBus},
        {"", "", ownBus},
        {two, "/run/elsewhere", two},
        {"unset", "/run/elsewhere", "unix:path=/run/elsewhere/bus"},
        {"unset", "/tmp/a b,c;%=ä", "unix:path=/tmp/a%20b%2Cc%3B%25%3D%C3%A4/bus"},
        // Left over from the user that the process was before.
        {"unix:path=" + another + "/bus", "unset", ownBus},
        {"unset", another, ownBus},
        {"unset", own + "0", ownBus},
    };
    for (const auto& [address, folder, expected] : cases) {
        Set("DBUS_SESSION_BUS_ADDRESS", address);
        Set("XDG_RUNTIME_DIR", folder);
        EXPECT_EQ(SessionBusAddress(), expected);
    }
    Set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/tmp/x");
    EXPECT_EQ(SystemBusAddress(), "unix:path=/tmp/x");
    Set("DBUS_SYSTEM_BUS_ADDRESS", "unset");
    EXPECT_EQ(SystemBusAddress(), "unix:path=/run/dbus/system_bus_socket");
}

} // namespace
} // namespace kqu::platform

#include "platform/dbus/BusAddress.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>

namespace kqu::platform {
namespace {

/// Sets a variable, or takes it away, until the end of the scope.
class Setting {
  public:
    Setting(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* before = getenv(name))
            before_ = before;
        Set(value);
    }
    ~Setting() { Set(before_); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

  private:
    void Set(const std::optional<std::string>& value) const {
        if (value)
            setenv(name_, value->c_str(), 1);
        else
            unsetenv(name_);
    }
    const char* name_;
    std::optional<std::string> before_;
};

TEST(BusAddress, TheSessionBusIsThatOfTheUserOfTheProcess) {
    const std::string own = std::to_string(getuid());
    const std::string another = std::to_string(getuid() + 1);
    const std::string ownBus = "unix:path=/run/user/" + own + "/bus";
    const std::optional<std::string> unset;
    const struct {
        std::optional<std::string> address;
        std::optional<std::string> folder;
        std::string expected;
    } cases[] = {
        {unset, unset, ownBus},
        {"", "", ownBus},
        {"unix:abstract=/tmp/x,guid=0;tcp:host=h", "/run/elsewhere",
         "unix:abstract=/tmp/x,guid=0;tcp:host=h"},
        {unset, "/run/elsewhere", "unix:path=/run/elsewhere/bus"},
        {unset, "/tmp/a b,c;%=ä", "unix:path=/tmp/a%20b%2cc%3b%25%3d%c3%a4/bus"},
        {ownBus, "/run/elsewhere", ownBus},
        // Left over from the user that the process was before.
        {"unix:path=/run/user/" + another + "/bus", unset, ownBus},
        {"unix:path=/run/user/" + another + "/bus", "/run/user/" + another, ownBus},
        {unset, "/run/user/" + another, ownBus},
        {unset, "/run/user/" + own + "0", ownBus},
    };
    for (const auto& [address, folder, expected] : cases) {
        const Setting first("DBUS_SESSION_BUS_ADDRESS", address);
        const Setting second("XDG_RUNTIME_DIR", folder);
        EXPECT_EQ(SessionBusAddress(), expected);
    }
}

TEST(BusAddress, TheSystemBusIsWhereTheEnvironmentOrTheStandardSays) {
    {
        const Setting setting("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/tmp/x");
        EXPECT_EQ(SystemBusAddress(), "unix:path=/tmp/x");
    }
    const Setting setting("DBUS_SYSTEM_BUS_ADDRESS", std::nullopt);
    EXPECT_EQ(SystemBusAddress(), "unix:path=/run/dbus/system_bus_socket");
}

} // namespace
} // namespace kqu::platform

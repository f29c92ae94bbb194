#include "platform/dbus/BusAddress.h"

#include "platform/CDeleter.h"

#include <cstdlib>
#include <gio/gio.h>
#include <string_view>
#include <unistd.h>

namespace kqu::platform {

namespace {
constexpr std::string_view runtimeFolders = "/run/user/";

/// A variable's value; empty when it is not set, or not to be believed because the program was
/// given more rights than its caller has.
std::string_view Variable(const char* name) {
    const char* value = secure_getenv(name);
    return value == nullptr ? std::string_view() : value;
}

std::string OwnRuntimeFolder() {
    return std::string(runtimeFolders) + std::to_string(getuid());
}

bool LiesInAnothersRuntimeFolder(std::string_view path) {
    if (!path.starts_with(runtimeFolders))
        return false;
    const std::string_view rest = path.substr(runtimeFolders.size());
    return rest.substr(0, rest.find('/')) != std::to_string(getuid());
}

std::string SocketAddress(const std::string& path) {
    const CPointer<char, g_free> escaped(g_dbus_address_escape_value(path.c_str()));
    return std::string("unix:path=") + escaped.get();
}
} // namespace

std::string SessionBusAddress() {
    constexpr std::string_view scheme = "unix:path=";
    const std::string_view told = Variable("DBUS_SESSION_BUS_ADDRESS");
    const bool isSocket = told.starts_with(scheme);
    if (!told.empty() && !(isSocket && LiesInAnothersRuntimeFolder(told.substr(scheme.size()))))
        return std::string(told);

    const std::string_view folder = Variable("XDG_RUNTIME_DIR");
    const bool isOurs = !folder.empty() && !LiesInAnothersRuntimeFolder(folder);
    return SocketAddress((isOurs ? std::string(folder) : OwnRuntimeFolder()) + "/bus");
}

std::string SystemBusAddress() {
    const std::string_view told = Variable("DBUS_SYSTEM_BUS_ADDRESS");
    return told.empty() ? "unix:path=/run/dbus/system_bus_socket" : std::string(told);
}

} // namespace kqu::platform

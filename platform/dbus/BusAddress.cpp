#include "platform/dbus/BusAddress.h"

#include <cstdlib>
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

/// The address of a socket, with all bytes escaped that an address does not take as they are.
std::string SocketAddress(std::string_view path) {
    constexpr std::string_view asTheyAre = "-_/.\\*0123456789"
                                           "abcdefghijklmnopqrstuvwxyz"
                                           "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string address = "unix:path=";
    for (const char character : path) {
        if (asTheyAre.find(character) != std::string_view::npos) {
            address += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        address += {'%', digits[byte >> 4], digits[byte & 0xf]};
    }
    return address;
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

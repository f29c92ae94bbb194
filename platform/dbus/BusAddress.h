#pragma once

#include <string>

namespace kqu::platform {

/// The program's own name on the session bus.
inline constexpr const char* ownBusName = "com.brackwater.KQU_Messenger";

/// The address of the session bus of the user that the process runs as, in D-Bus's own notation:
/// DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in XDG_RUNTIME_DIR, else the one in the folder
/// that the user's runtime folder is on every machine with a login manager. The process may have
/// changed its user since it was started; what the environment says of another user's runtime
/// folder is passed over then.
[[nodiscard]] std::string SessionBusAddress();

/// The address of the system bus: DBUS_SYSTEM_BUS_ADDRESS, else the well-known socket.
[[nodiscard]] std::string SystemBusAddress();

} // namespace kqu::platform

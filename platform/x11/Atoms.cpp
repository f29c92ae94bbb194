#include "platform/x11/Atoms.h"

#include "platform/CDeleter.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace kqu::platform {

namespace {
constexpr std::size_t atomCount = static_cast<std::size_t>(AtomName::Count);

/// In the order of AtomName.
constexpr std::array<std::string_view, atomCount> names{
    "MANAGER",
    "UTF8_STRING",
    "WM_CHANGE_STATE",
    "WM_DELETE_WINDOW",
    "WM_PROTOCOLS",
    "WM_STATE",
    "_MOTIF_WM_HINTS",
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_DESKTOP",
    "_NET_WM_ICON",
    "_NET_WM_ICON_NAME",
    "_NET_WM_MOVERESIZE",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_PING",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_DEMANDS_ATTENTION",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_MAXIMIZED_HORZ",
    "_NET_WM_STATE_MAXIMIZED_VERT",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_STICKY",
    "_NET_WM_USER_TIME",
    "_NET_WM_WINDOW_OPACITY",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_XSETTINGS_S0",
    "_XSETTINGS_SETTINGS",
};
static_assert(!names.back().empty(), "a name for each atom");
} // namespace

Atoms::Atoms(xcb_connection_t* connection) {
    std::array<xcb_intern_atom_cookie_t, atomCount> cookies{};
    for (std::size_t index = 0; index < atomCount; ++index)
        cookies[index] = xcb_intern_atom(
            connection, 0, static_cast<std::uint16_t>(names[index].size()), names[index].data());
    for (std::size_t index = 0; index < atomCount; ++index) {
        const CPointer<xcb_intern_atom_reply_t, std::free> reply(
            xcb_intern_atom_reply(connection, cookies[index], nullptr));
        if (reply)
            atoms_[index] = reply->atom;
    }
}

} // namespace kqu::platform

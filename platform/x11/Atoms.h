#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace kqu::platform {

/// The names that are used beyond the predefined ones of the core protocol. They are interned when
/// the display is opened.
inline constexpr auto atomNames =
    std::to_array<std::string_view>({"MANAGER",
                                     "UTF8_STRING",
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
                                     "_XSETTINGS_SETTINGS"});

/// One of those names. A name that is not among them does not compile.
struct AtomName {
    // NOLINTNEXTLINE(google-explicit-constructor): a call reads as the standard does.
    consteval AtomName(const char* name)
        : index(static_cast<std::size_t>(std::find(atomNames.begin(), atomNames.end(), name) -
                                         atomNames.begin())) {
        if (index == atomNames.size())
            throw "not a known atom";
    }
    std::size_t index;
};

} // namespace kqu::platform

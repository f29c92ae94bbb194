#pragma once

#include <array>
#include <cstddef>
#include <xcb/xcb.h>

namespace kqu::platform {

/// The names that are used beyond the predefined ones of the core protocol.
enum class AtomName : std::size_t {
    Manager,
    Utf8String,
    WmChangeState,
    WmDeleteWindow,
    WmProtocols,
    WmState,
    MotifWmHints,
    NetSupported,
    NetSupportingWmCheck,
    NetWmDesktop,
    NetWmIcon,
    NetWmIconName,
    NetWmMoveResize,
    NetWmName,
    NetWmPid,
    NetWmPing,
    NetWmState,
    NetWmStateAbove,
    NetWmStateDemandsAttention,
    NetWmStateHidden,
    NetWmStateMaximizedHorz,
    NetWmStateMaximizedVert,
    NetWmStateSkipTaskbar,
    NetWmStateSticky,
    NetWmUserTime,
    NetWmWindowOpacity,
    NetWmWindowType,
    NetWmWindowTypeNormal,
    NetWmWindowTypeUtility,
    XSettingsS0,
    XSettingsSettings,
    Count
};

/// All of them, interned in one round trip.
class Atoms {
  public:
    explicit Atoms(xcb_connection_t* connection);
    [[nodiscard]] xcb_atom_t operator[](AtomName name) const {
        return atoms_[static_cast<std::size_t>(name)];
    }

  private:
    std::array<xcb_atom_t, static_cast<std::size_t>(AtomName::Count)> atoms_{};
};

} // namespace kqu::platform

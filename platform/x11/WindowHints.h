#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Display.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace kqu::platform {

/// The properties by which a window tells a window manager what it is and what it wants (ICCCM,
/// EWMH, and the Motif hints for the boxes of its frame).
class WindowHints {
  public:
    WindowHints(const Display& display, xcb_window_t window, const NativeWindowSettings& settings);

    /// What never changes: class, process, machine, protocols.
    void WriteIdentity() const;
    /// What a manager forgets, or must not take over, when the window is withdrawn. To be written
    /// before each map, together with the place. `iconic` asks for a map to the iconic state.
    void WriteWishes(bool iconic) const;
    /// Place and size of the content on the root window. A window that the user may not resize has
    /// no other size than this; static gravity makes the place that of the content and not of the
    /// frame that the manager puts around it.
    void WritePlaceAndSize(const Rect& content) const;
    void WriteTitle(std::string_view title) const;
    /// Attribute bits: 8 collapse box, 2 and 4 zoom.
    void WriteAttributes(std::uint32_t attributes) const;
    /// From 0.0, invisible, to 1.0, opaque.
    void WriteOpacity(float alpha) const;

  private:
    /// Sets a property of 32-bit items.
    void Write(AtomName property, xcb_atom_t type,
               std::initializer_list<std::uint32_t> words) const;

    const Display& display_;
    xcb_window_t window_;
    NativeWindowSettings settings_;
};

} // namespace kqu::platform

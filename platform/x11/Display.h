#pragma once

#include "platform/CDeleter.h"
#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Atoms.h"
#include "platform/x11/PixelFormat.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace kqu::platform {

/// A connection to the X server, with what is fixed for as long as it lives: the screen, the visual
/// of our windows, the atoms. Everything stays safe to call when the server has gone: requests
/// vanish and questions get no answer.
class Display {
  public:
    /// The display that the environment names; nil when it can't be opened or has no visual in
    /// which colours can be given as they are.
    [[nodiscard]] static std::unique_ptr<Display> Open();

    [[nodiscard]] xcb_connection_t* Connection() const { return connection_.get(); }
    [[nodiscard]] bool IsLost() const { return xcb_connection_has_error(Connection()) != 0; }
    void Flush() const { xcb_flush(Connection()); }

    [[nodiscard]] const xcb_screen_t& Screen() const { return *screen_; }
    [[nodiscard]] xcb_window_t Root() const { return screen_->root; }
    [[nodiscard]] xcb_visualid_t Visual() const { return format_->Visual(); }
    [[nodiscard]] xcb_colormap_t Colormap() const { return colormap_; }
    [[nodiscard]] const PixelFormat& Format() const { return *format_; }
    [[nodiscard]] xcb_atom_t Atom(AtomName name) const { return atoms_[name.index]; }

    /// Set a property of 32-bit items, or of bytes.
    void SetWords(xcb_window_t window, AtomName property, xcb_atom_t type,
                  std::span<const std::uint32_t> words) const;
    void SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                 std::string_view text) const;
    /// Asks for a property of 32-bit items; the question's sequence number.
    [[nodiscard]] unsigned int AskForWords(xcb_window_t window, AtomName property,
                                           xcb_atom_t type) const;
    /// The items that an answer holds; nothing if there is none or it is of another type.
    [[nodiscard]] static std::vector<std::uint32_t> WordsOf(const void* reply, xcb_atom_t type);
    /// Sends an event of the core protocol to whoever manages the root window.
    template <class Event>
    void SendToRoot(const Event& event) const {
        std::array<char, 32> bytes{};
        std::memcpy(bytes.data(), &event, sizeof event);
        xcb_send_event(Connection(), 0, Root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       bytes.data());
    }
    /// Sends a client message on `window` to whoever manages the root window, as EWMH has it.
    void SendToManager(xcb_window_t window, AtomName type,
                       const std::array<std::uint32_t, 5>& words) const;

  private:
    using Connected = CPointer<xcb_connection_t, xcb_disconnect>;

    Display(Connected connection, int screenNumber);
    [[nodiscard]] std::optional<PixelFormat> ChooseFormat() const;
    void InternAtoms();

    Connected connection_;
    const xcb_screen_t* screen_ = nullptr;
    std::array<xcb_atom_t, atomNames.size()> atoms_{};
    std::optional<PixelFormat> format_;
    xcb_colormap_t colormap_ = 0;
};

} // namespace kqu::platform

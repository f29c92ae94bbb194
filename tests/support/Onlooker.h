#pragma once

#include "platform/interfaces/NativeWindow.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace kqu::x11test {

/// A client of its own on the display that the environment names: sees what anybody can see there,
/// and moves the user's hand.
class Onlooker {
  public:
    Onlooker();

    /// Waits for a condition; a failed assertion if it does not come true within some seconds.
    /// `meanwhile` is called all the time.
    void WaitFor(const std::function<bool()>& condition, const std::string& what,
                 const std::function<void()>& meanwhile = {}) const;

    // Windows. Places are on the root window.
    [[nodiscard]] platform::Rect ContentOf(xcb_window_t window) const;
    [[nodiscard]] bool IsViewable(xcb_window_t window) const;
    [[nodiscard]] std::uint32_t PixelAt(platform::Point onRoot) const;
    [[nodiscard]] xcb_window_t Focus() const;
    /// The 32-bit items of a property; atoms as their names.
    [[nodiscard]] std::vector<std::uint32_t> Words(xcb_window_t window, const char* property) const;
    [[nodiscard]] std::vector<std::string> Names(xcb_window_t window, const char* property) const;
    [[nodiscard]] std::string Text(xcb_window_t window, const char* property) const;
    [[nodiscard]] bool HasManager() const;
    /// Whether the manager names it among the windows that it manages.
    [[nodiscard]] bool IsListed(xcb_window_t window) const;
    /// A window of another program, to be mapped by whoever does that.
    [[nodiscard]] xcb_window_t MakeWindow(const platform::Rect& content) const;
    void DestroyWindow(xcb_window_t window) const;
    /// Changes a property that nobody cares for.
    void Touch(xcb_window_t window) const;

    /// From here on, records what happens to a window, as short lines: "property WM_NAME",
    /// "configure 340 73", "map", "unmap". For the root window also the messages to a manager:
    /// "WM_PROTOCOLS _NET_WM_PING 77".
    void Watch(xcb_window_t window) const;
    [[nodiscard]] std::vector<std::string> Happened();

    // Messages, as a window manager or a pager sends them.
    void Send(xcb_window_t to, xcb_window_t about, const char* type,
              const std::vector<std::uint32_t>& words) const;
    void Configure(xcb_window_t window, const platform::Rect& content) const;
    /// Defines a monitor by RandR.
    void SetMonitor(const char* name, const platform::Rect& area, bool isPrimary) const;
    void DeleteMonitor(const char* name) const;

    // The user's hand.
    void MoveTo(platform::Point onRoot) const;
    void Press(int button) const;
    void Release(int button) const;
    [[nodiscard]] platform::Point Pointer() const;

    [[nodiscard]] xcb_atom_t Atom(const char* name) const;
    [[nodiscard]] xcb_window_t Root() const { return screen_->root; }
    /// Returns when the server has done all that was asked for.
    void Sync() const;
    void HoldServer() const;
    void LetServerGo() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    [[nodiscard]] std::vector<std::uint8_t> Bytes(xcb_window_t window, const char* property) const;
    [[nodiscard]] std::string NameOf(xcb_atom_t atom) const;
    void FakeInput(std::uint8_t type, int detail, platform::Point onRoot) const;

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_screen_t* screen_ = nullptr;
};

} // namespace kqu::x11test

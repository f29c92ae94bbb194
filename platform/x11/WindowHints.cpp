#include "platform/x11/WindowHints.h"

#include <algorithm>
#include <sys/utsname.h>
#include <unistd.h>
#include <xcb/xcb_icccm.h>

namespace kqu::platform {

namespace {
using std::string_view_literals::operator""sv;

/// Instance and class, each with its NUL.
constexpr std::string_view windowClass = "kqu-messenger\0KQU_Messenger\0"sv;

// Attribute bits of a window.
constexpr std::uint32_t zoomAttributes = 2 | 4;
constexpr std::uint32_t collapseAttribute = 8;

/// The desktop of a window that stands on all of them.
constexpr std::uint32_t allDesktops = 0xFFFFFFFF;

} // namespace

WindowHints::WindowHints(const Display& display, xcb_window_t window,
                         const NativeWindowSettings& settings)
    : display_(display), window_(window), settings_(settings) {}

void WindowHints::WriteIdentity() const {
    xcb_icccm_set_wm_class(display_.Connection(), window_,
                           static_cast<std::uint32_t>(windowClass.size()), windowClass.data());
    utsname machine{};
    uname(&machine);
    display_.SetText(window_, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, machine.nodename);
    Write("_NET_WM_PID", XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(getpid())});
    // A window without a close box may be closed all the same, by the manager's menu or a pager.
    Write("WM_PROTOCOLS", XCB_ATOM_ATOM,
          {display_.Atom("WM_DELETE_WINDOW"), display_.Atom("_NET_WM_PING")});
}

void WindowHints::WriteWishes(bool iconic) const {
    const bool floats = settings_.globalFloating;
    xcb_icccm_wm_hints_t hints{};
    xcb_icccm_wm_hints_set_input(&hints, floats ? 0 : 1);
    hints.flags |= XCB_ICCCM_WM_HINT_STATE;
    hints.initial_state = iconic ? XCB_ICCCM_WM_STATE_ICONIC : XCB_ICCCM_WM_STATE_NORMAL;
    xcb_icccm_set_wm_hints(display_.Connection(), window_, &hints);
    Write("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
          {floats ? display_.Atom("_NET_WM_WINDOW_TYPE_UTILITY")
                  : display_.Atom("_NET_WM_WINDOW_TYPE_NORMAL")});
    if (!floats)
        return;
    const xcb_atom_t above = display_.Atom("_NET_WM_STATE_ABOVE");
    const xcb_atom_t sticky = display_.Atom("_NET_WM_STATE_STICKY");
    // A minimised window stands in the taskbar, where the user gets it back.
    if (iconic)
        Write("_NET_WM_STATE", XCB_ATOM_ATOM, {above, sticky});
    else
        Write("_NET_WM_STATE", XCB_ATOM_ATOM,
              {above, sticky, display_.Atom("_NET_WM_STATE_SKIP_TASKBAR")});
    Write("_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {allDesktops});
    // 0 asks for no focus when the window appears.
    Write("_NET_WM_USER_TIME", XCB_ATOM_CARDINAL, {0});
}

void WindowHints::Write(AtomName property, xcb_atom_t type,
                        std::initializer_list<std::uint32_t> words) const {
    display_.SetWords(window_, property, type, {words.begin(), words.size()});
}

void WindowHints::WritePlaceAndSize(const Rect& content) const {
    xcb_size_hints_t hints{};
    // In the user's name, which managers respect more, and in the program's.
    xcb_icccm_size_hints_set_position(&hints, 1, content.x, content.y);
    hints.flags |= XCB_ICCCM_SIZE_HINT_P_POSITION;
    xcb_icccm_size_hints_set_size(&hints, 0, content.width, content.height);
    if (!settings_.resizeable) {
        xcb_icccm_size_hints_set_min_size(&hints, content.width, content.height);
        xcb_icccm_size_hints_set_max_size(&hints, content.width, content.height);
    }
    xcb_icccm_size_hints_set_win_gravity(&hints, XCB_GRAVITY_STATIC);
    xcb_icccm_set_wm_normal_hints(display_.Connection(), window_, &hints);
}

void WindowHints::WriteTitle(std::string_view title) const {
    const xcb_atom_t utf8 = display_.Atom("UTF8_STRING");
    display_.SetText(window_, display_.Atom("_NET_WM_NAME"), utf8, title);
    display_.SetText(window_, display_.Atom("_NET_WM_ICON_NAME"), utf8, title);
    // For managers that know nothing newer.
    display_.SetText(window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
    display_.SetText(window_, XCB_ATOM_WM_ICON_NAME, XCB_ATOM_STRING, title);
}

void WindowHints::WriteAttributes(std::uint32_t attributes) const {
    // Move; a border, a title and a menu.
    std::uint32_t functions = 4;
    std::uint32_t decorations = 2 | 8 | 16;
    const auto offer = [&](bool isOffered, std::uint32_t function, std::uint32_t decoration) {
        functions |= isOffered ? function : 0;
        decorations |= isOffered ? decoration : 0;
    };
    offer(settings_.resizeable, 2, 4);
    offer(settings_.minimizeButton || (attributes & collapseAttribute) != 0, 8, 32);
    offer(settings_.maximizeButton || (attributes & zoomAttributes) != 0, 16, 64);
    offer(settings_.closeButton, 32, 0);
    // 1 and 2 say that both are given.
    Write("_MOTIF_WM_HINTS", display_.Atom("_MOTIF_WM_HINTS"),
          {1 | 2, functions, decorations, 0, 0});
}

void WindowHints::WriteOpacity(float alpha) const {
    if (alpha >= 1.0F) {
        xcb_delete_property(display_.Connection(), window_,
                            display_.Atom("_NET_WM_WINDOW_OPACITY"));
        return;
    }
    constexpr std::uint32_t opaque = 0xFFFF;
    // Sixteen bits are more than any eye, and both halves of the number get them.
    const auto share = static_cast<std::uint32_t>(std::max(alpha, 0.0F) * float{opaque});
    Write("_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {share << 16 | share});
}

} // namespace kqu::platform

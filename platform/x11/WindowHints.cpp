#include "platform/x11/WindowHints.h"

#include <algorithm>
#include <array>
#include <climits>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>
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

// The Motif hints.
constexpr std::uint32_t motifFunctionsAndDecorations = 1 | 2;
constexpr std::uint32_t motifResize = 2;
constexpr std::uint32_t motifMove = 4;
constexpr std::uint32_t motifMinimise = 8;
constexpr std::uint32_t motifMaximise = 16;
constexpr std::uint32_t motifClose = 32;
constexpr std::uint32_t motifBorder = 2;
constexpr std::uint32_t motifResizeHandles = 4;
constexpr std::uint32_t motifTitle = 8;
constexpr std::uint32_t motifMenu = 16;
constexpr std::uint32_t motifMinimiseBox = 32;
constexpr std::uint32_t motifMaximiseBox = 64;

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string MachineName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    if (gethostname(name.data(), name.size() - 1) != 0)
        return {};
    return name.data();
}
} // namespace

WindowHints::WindowHints(const Display& display, xcb_window_t window,
                         const NativeWindowSettings& settings)
    : display_(display), window_(window), settings_(settings) {}

void WindowHints::WriteIdentity() const {
    xcb_icccm_set_wm_class(display_.Connection(), window_,
                           static_cast<std::uint32_t>(windowClass.size()), windowClass.data());
    const std::string machine = MachineName();
    display_.SetText(window_, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, machine);
    const std::array process{static_cast<std::uint32_t>(getpid())};
    display_.SetWords(window_, display_.Atom(AtomName::NetWmPid), XCB_ATOM_CARDINAL, process);
    // A window without a close box may be closed all the same, by the manager's menu or a pager.
    const std::array protocols{display_.Atom(AtomName::WmDeleteWindow),
                               display_.Atom(AtomName::NetWmPing)};
    display_.SetWords(window_, display_.Atom(AtomName::WmProtocols), XCB_ATOM_ATOM, protocols);
}

void WindowHints::WriteWishes(bool iconic) const {
    const bool floats = settings_.globalFloating;
    xcb_icccm_wm_hints_t hints{};
    xcb_icccm_wm_hints_set_input(&hints, floats ? 0 : 1);
    if (iconic)
        xcb_icccm_wm_hints_set_iconic(&hints);
    else
        xcb_icccm_wm_hints_set_normal(&hints);
    xcb_icccm_set_wm_hints(display_.Connection(), window_, &hints);

    const std::array type{
        display_.Atom(floats ? AtomName::NetWmWindowTypeUtility : AtomName::NetWmWindowTypeNormal)};
    display_.SetWords(window_, display_.Atom(AtomName::NetWmWindowType), XCB_ATOM_ATOM, type);
    if (!floats)
        return;
    // A minimised window stands in the taskbar, where the user gets it back.
    std::vector states{display_.Atom(AtomName::NetWmStateAbove),
                       display_.Atom(AtomName::NetWmStateSticky)};
    if (!iconic)
        states.push_back(display_.Atom(AtomName::NetWmStateSkipTaskbar));
    display_.SetWords(window_, display_.Atom(AtomName::NetWmState), XCB_ATOM_ATOM, states);
    display_.SetWords(window_, display_.Atom(AtomName::NetWmDesktop), XCB_ATOM_CARDINAL,
                      std::array{allDesktops});
    // 0 asks for no focus when the window appears.
    const std::array<std::uint32_t, 1> userTime{0};
    display_.SetWords(window_, display_.Atom(AtomName::NetWmUserTime), XCB_ATOM_CARDINAL, userTime);
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
    const xcb_atom_t utf8 = display_.Atom(AtomName::Utf8String);
    const xcb_atom_t plain = IsAscii(title) ? xcb_atom_t{XCB_ATOM_STRING} : utf8;
    display_.SetText(window_, display_.Atom(AtomName::NetWmName), utf8, title);
    display_.SetText(window_, display_.Atom(AtomName::NetWmIconName), utf8, title);
    display_.SetText(window_, XCB_ATOM_WM_NAME, plain, title);
    display_.SetText(window_, XCB_ATOM_WM_ICON_NAME, plain, title);
}

void WindowHints::WriteAttributes(std::uint32_t attributes) const {
    std::uint32_t functions = motifMove;
    std::uint32_t decorations = motifBorder | motifTitle | motifMenu;
    if (settings_.resizeable) {
        functions |= motifResize;
        decorations |= motifResizeHandles;
    }
    if (settings_.closeButton)
        functions |= motifClose;
    if (settings_.minimizeButton || (attributes & collapseAttribute) != 0) {
        functions |= motifMinimise;
        decorations |= motifMinimiseBox;
    }
    if (settings_.maximizeButton || (attributes & zoomAttributes) != 0) {
        functions |= motifMaximise;
        decorations |= motifMaximiseBox;
    }
    const std::array<std::uint32_t, 5> hints{motifFunctionsAndDecorations, functions, decorations,
                                             0, 0};
    const xcb_atom_t motif = display_.Atom(AtomName::MotifWmHints);
    display_.SetWords(window_, motif, motif, hints);
}

void WindowHints::WriteOpacity(float alpha) const {
    const xcb_atom_t opacity = display_.Atom(AtomName::NetWmWindowOpacity);
    if (alpha >= 1.0F) {
        display_.DeleteProperty(window_, opacity);
        return;
    }
    constexpr std::uint32_t opaque = 0xFFFF;
    // Sixteen bits are more than any eye, and both halves of the number get them.
    const auto share = static_cast<std::uint32_t>(std::max(alpha, 0.0F) * float{opaque});
    const std::array value{share << 16 | share};
    display_.SetWords(window_, opacity, XCB_ATOM_CARDINAL, value);
}

} // namespace kqu::platform

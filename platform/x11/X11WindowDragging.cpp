#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <chrono>

// Moving the window by its content: the window manager's business where there is one that does it
// (EWMH `_NET_WM_MOVERESIZE`), else ours. Either way the program goes on living.

namespace kqu::platform {

namespace {
// The directions of _NET_WM_MOVERESIZE.
constexpr std::uint32_t moveByPointer = 8;
constexpr std::uint32_t cancelMove = 11;
/// The source of a message: a normal application.
constexpr std::uint32_t fromApplication = 1;
} // namespace

void X11Window::BeginDrag(Point start) {
    // Without a press there is nothing that would ever end the drag, and a click may be over by the
    // time that it is handled.
    if (!isPressed_ || drag_ || !system_.IsButtonDownNow())
        return;
    const Point startOnRoot = start + system_.Origin();
    if (ManagerMovesWindows())
        HandDragOver(startOnRoot);
    else
        drag_ = Drag{startOnRoot, place_.Actual()};
}

bool X11Window::ManagerMovesWindows() const {
    const xcb_atom_t check = display_.Atom(AtomName::NetSupportingWmCheck);
    const auto manager = display_.Words(display_.Root(), check, XCB_ATOM_WINDOW);
    // A manager that is alive has a window that names itself; what a dead one left behind has not.
    if (manager.empty() || display_.Words(manager.front(), check, XCB_ATOM_WINDOW) != manager)
        return false;
    const auto supported =
        display_.Words(display_.Root(), display_.Atom(AtomName::NetSupported), XCB_ATOM_ATOM);
    return std::find(supported.begin(), supported.end(),
                     display_.Atom(AtomName::NetWmMoveResize)) != supported.end();
}

void X11Window::HandDragOver(Point startOnRoot) {
    // The press made the pointer ours; the manager needs it.
    xcb_ungrab_pointer(display_.Connection(), pressTime_);
    display_.SendToManager(id_.value, AtomName::NetWmMoveResize,
                           {static_cast<std::uint32_t>(startOnRoot.x),
                            static_cast<std::uint32_t>(startOnRoot.y), moveByPointer,
                            XCB_BUTTON_INDEX_1, fromApplication});
    display_.Flush();
    // The release goes to the manager; for the owner the press ends here.
    isPressed_ = false;
    handedOver_ = true;
    releaseOwed_ = true;
}

void X11Window::CancelHandedOverDrag(Point pointer) {
    // The button went up before the manager had the pointer: it would move the window for ever.
    display_.SendToManager(id_.value, AtomName::NetWmMoveResize,
                           {static_cast<std::uint32_t>(pointer.x),
                            static_cast<std::uint32_t>(pointer.y), cancelMove, XCB_BUTTON_INDEX_1,
                            fromApplication});
    display_.Flush();
}

void X11Window::DragTo(Point pointer) {
    const Point place = drag_->placeAtStart + (pointer - drag_->pointerAtStart);
    pointerTold_ = pointer;
    if (place == place_.Believed())
        return;
    wanted_.onDesktop = place - system_.Origin();
    CommitGeometry(std::chrono::steady_clock::now());
    display_.Flush();
    TellContent();
}

} // namespace kqu::platform

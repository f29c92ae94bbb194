#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

// Moving the window by its content: the window manager's business where there is one that does it
// (EWMH `_NET_WM_MOVERESIZE`), else ours. Either way the program goes on living.

namespace kqu::platform {

namespace {
// The directions of _NET_WM_MOVERESIZE.
constexpr std::uint32_t moveByPointer = 8;
constexpr std::uint32_t cancelMove = 11;
/// The source of a message: a normal application.
constexpr std::uint32_t fromApplication = 1;

using Words = std::vector<std::uint32_t>;
} // namespace

void X11Window::BeginDrag(Point /*start*/) {
    // Without a press there is nothing that would ever end the drag. Who moves the window is asked
    // at the first motion: a mere press is none of the manager's business.
    if (isPressed_ && !drag_)
        drag_ = Drag{++drags_, pointerAtPress_, contentAtPress_};
}

void X11Window::AskWhoDrags() {
    AskInDrag(display_.Root(), AtomName::NetSupported, XCB_ATOM_ATOM, [this](const Words& atoms) {
        const xcb_atom_t move = display_.Atom(AtomName::NetWmMoveResize);
        drag_->managerCan = std::find(atoms.begin(), atoms.end(), move) != atoms.end();
    });
    AskInDrag(display_.Root(), AtomName::NetSupportingWmCheck, XCB_ATOM_WINDOW,
              [this](const Words& manager) {
                  if (drag_->managerCan && !manager.empty())
                      AskWhetherAlive(manager);
                  else
                      DragByOurselves(pointerTold_);
              });
}

void X11Window::AskWhetherAlive(const Words& manager) {
    // A manager that is alive has a window that names itself; what a dead one left behind has not.
    AskInDrag(manager.front(), AtomName::NetSupportingWmCheck, XCB_ATOM_WINDOW,
              [this, manager](const Words& named) {
                  if (named == manager)
                      HandDragOver();
                  else
                      DragByOurselves(pointerTold_);
              });
}

void X11Window::AskInDrag(xcb_window_t window, AtomName property, xcb_atom_t type,
                          std::function<void(const Words&)> take) {
    // Each drag asks for itself; what another one asked is of no interest any more.
    Ask(display_.AskForWords(window, display_.Atom(property), type).sequence,
        [this, type, asking = drags_, take = std::move(take)](const void* reply) {
            if (drag_ && drag_->number == asking && !drag_->isOurs)
                take(Display::WordsOf(static_cast<const xcb_get_property_reply_t*>(reply), type));
        });
}

void X11Window::HandDragOver() {
    const Point start = drag_->pointerAtStart;
    // The press made the pointer ours; the manager needs it.
    xcb_ungrab_pointer(display_.Connection(), pressTime_);
    display_.SendToManager(id_.value, AtomName::NetWmMoveResize,
                           {static_cast<std::uint32_t>(start.x),
                            static_cast<std::uint32_t>(start.y), moveByPointer, XCB_BUTTON_INDEX_1,
                            fromApplication});
    display_.Flush();
    handedOver_ = true;
    // The release goes to the manager; for the owner the press ends here.
    EndPress(pointerTold_);
}

void X11Window::CancelHandedOverDrag(Point pointer) {
    // The button went up before the manager had the pointer: it would move the window for ever.
    display_.SendToManager(id_.value, AtomName::NetWmMoveResize,
                           {static_cast<std::uint32_t>(pointer.x),
                            static_cast<std::uint32_t>(pointer.y), cancelMove, XCB_BUTTON_INDEX_1,
                            fromApplication});
    display_.Flush();
}

void X11Window::DragByOurselves(Point pointer) {
    drag_->isOurs = true;
    DragTo(pointer);
}

void X11Window::DragTo(Point pointer) {
    const Point place = drag_->placeAtStart + (pointer - drag_->pointerAtStart);
    pointerTold_ = pointer;
    const Point onDesktop = ToLogical(place);
    if (!drag_->isOurs || std::exchange(wanted_.onDesktop, onDesktop) == onDesktop)
        return;
    CommitGeometry(std::chrono::steady_clock::now());
    display_.Flush();
    TellContent();
}

} // namespace kqu::platform

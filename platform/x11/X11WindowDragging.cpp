#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <utility>

// Moving the window by its content: the window manager's business where there is one that does it
// (EWMH `_NET_WM_MOVERESIZE`), else ours. Either way the program goes on living.

namespace kqu::platform {

void X11Window::BeginDrag(Point /*start*/) {
    // Without a press there is nothing that would ever end the drag. Who moves the window is asked
    // at the first motion: a mere press is none of the manager's business.
    if (isPressed_ && drag_ == Drag::Nobody)
        drag_ = Drag::NotKnownYet;
}

void X11Window::AskWhoDrags() {
    static constexpr AtomName check = "_NET_SUPPORTING_WM_CHECK";
    ++drags_;
    // A manager that is alive has a window that names itself; what a dead one left behind has not.
    AskInDrag(display_.Root(), "_NET_SUPPORTED", XCB_ATOM_ATOM, [this](const Words& atoms) {
        const xcb_atom_t move = display_.Atom("_NET_WM_MOVERESIZE");
        if (std::find(atoms.begin(), atoms.end(), move) == atoms.end())
            return DragByOurselves(pointerTold_);
        AskInDrag(display_.Root(), check, XCB_ATOM_WINDOW, [this](const Words& manager) {
            if (manager.empty())
                return DragByOurselves(pointerTold_);
            AskInDrag(manager.front(), check, XCB_ATOM_WINDOW, [this, manager](const Words& named) {
                if (named == manager)
                    HandDragOver();
                else
                    DragByOurselves(pointerTold_);
            });
        });
    });
}

void X11Window::AskInDrag(xcb_window_t window, AtomName property, xcb_atom_t type,
                          std::function<void(const Words&)> take) {
    // Each drag asks for itself; what another one asked is of no interest any more.
    Ask(display_.AskForWords(window, property, type),
        [this, type, asking = drags_, take = std::move(take)](const void* reply) {
            if (drag_ == Drag::NotKnownYet && drags_ == asking)
                take(Display::WordsOf(reply, type));
        });
}

void X11Window::HandDragOver() {
    // The press made the pointer ours; the manager needs it.
    xcb_ungrab_pointer(display_.Connection(), pressTime_);
    SendMoveResize(pointerAtPress_, MoveResize::ByPointer);
    handedOver_ = true;
    // The release goes to the manager; for the owner the press ends here.
    EndPress(pointerTold_);
}

void X11Window::SendMoveResize(Point pointer, MoveResize direction) const {
    display_.SendToManager(
        id_, "_NET_WM_MOVERESIZE",
        {static_cast<std::uint32_t>(pointer.x), static_cast<std::uint32_t>(pointer.y),
         static_cast<std::uint32_t>(direction), XCB_BUTTON_INDEX_1, fromApplication});
    display_.Flush();
}

void X11Window::DragByOurselves(Point pointer) {
    drag_ = Drag::Ourselves;
    DragTo(pointer);
}

void X11Window::DragTo(Point pointer) {
    pointerTold_ = pointer;
    if (drag_ != Drag::Ourselves ||
        !MoveWanted(ToLogical(contentAtPress_ + (pointer - pointerAtPress_))))
        return;
    CommitGeometry(std::chrono::steady_clock::now());
    display_.Flush();
    owner_.ContentChanged(wanted_);
}

} // namespace kqu::platform

#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

// The user's hand and the manager's messages.

namespace kqu::platform {

namespace {
constexpr xcb_button_t primaryButton = XCB_BUTTON_INDEX_1;

/// One step of the wheel for a press of the buttons 4 to 7; nothing for any other.
std::optional<Point> WheelStep(xcb_button_t button) {
    switch (button) {
    case 4:
        return Point{0, -1};
    case 5:
        return Point{0, 1};
    case 6:
        return Point{-1, 0};
    case 7:
        return Point{1, 0};
    default:
        return std::nullopt;
    }
}
} // namespace

void X11Window::Handle(const X11Event& event) {
    switch (event.Type()) {
    case XCB_BUTTON_PRESS:
        return OnPress(event.As<xcb_button_press_event_t>());
    case XCB_BUTTON_RELEASE:
        return OnRelease(event.As<xcb_button_release_event_t>());
    case XCB_MOTION_NOTIFY:
        return OnMotion(event.As<xcb_motion_notify_event_t>());
    case XCB_CONFIGURE_NOTIFY:
        return OnConfigured(event);
    case XCB_DESTROY_NOTIFY:
        // Another client has destroyed the window: nobody would ever see it again.
        return owner_.CloseRequested();
    case XCB_MAP_NOTIFY:
        return OnMapped();
    case XCB_UNMAP_NOTIFY:
        return OnUnmapped();
    case XCB_REPARENT_NOTIFY:
        parent_ = event.As<xcb_reparent_notify_event_t>().parent;
        return;
    case XCB_PROPERTY_NOTIFY:
        return OnProperty(event.As<xcb_property_notify_event_t>().atom);
    case XCB_CLIENT_MESSAGE:
        return OnMessage(event.As<xcb_client_message_event_t>());
    default:
        return;
    }
}

void X11Window::OnPress(const xcb_button_press_event_t& press) {
    const Point inContent{press.event_x, press.event_y};
    if (const auto step = WheelStep(press.detail)) {
        owner_.WheelTurned(inContent, step->x, step->y);
        return;
    }
    if (press.detail != primaryButton || mapping_ != Mapping::Up)
        return;
    isPressed_ = true;
    handedOver_ = false;
    drag_.reset();
    pressTime_ = press.time;
    pointerTold_ = {press.root_x, press.root_y};
    const std::weak_ptr<const bool> alive = alive_;
    TakeHold(pointerTold_ - inContent);
    if (!alive.expired())
        owner_.ButtonPressed(inContent);
}

void X11Window::TakeHold(Point contentOnRoot) {
    // Wherever the manager put the window when it was mapped: from the moment that the user takes
    // hold of it, its real place counts.
    answersMap_ = false;
    placeAsked_.reset();
    const bool isMoved = contentOnRoot != place_.Believed();
    place_.Assume(contentOnRoot);
    if (!isMoved)
        return;
    wanted_.onDesktop = contentOnRoot - system_.Origin();
    TellContent();
}

void X11Window::OnRelease(const xcb_button_release_event_t& release) {
    if (release.detail != primaryButton)
        return;
    const Point pointer{release.root_x, release.root_y};
    if (std::exchange(handedOver_, false))
        CancelHandedOverDrag(pointer);
    if (!isPressed_)
        return;
    if (!drag_) {
        EndPress({release.event_x, release.event_y});
        return;
    }
    const std::weak_ptr<const bool> alive = alive_;
    // Whoever would have moved the window: it goes where the hand has put it.
    DragByOurselves(pointer);
    if (!alive.expired())
        EndPress(pointer - place_.Believed());
}

void X11Window::EndPress(Point inContent) {
    isPressed_ = false;
    drag_.reset();
    owner_.ButtonReleased(inContent);
}

void X11Window::OnMotion(const xcb_motion_notify_event_t& motion) {
    if (!isPressed_)
        return;
    if (drag_) {
        DragTo({motion.root_x, motion.root_y});
        return;
    }
    // Where the pointer is by now, for motions that waited long and one that arrives alike.
    const Point pointer = system_.PointerOnRoot();
    if (std::exchange(pointerTold_, pointer) != pointer)
        owner_.PointerMoved(pointer - place_.Actual());
}

void X11Window::OnMessage(const xcb_client_message_event_t& message) {
    if (message.type != display_.Atom(AtomName::WmProtocols) || message.format != 32)
        return;
    const xcb_atom_t protocol = message.data.data32[0];
    if (protocol == display_.Atom(AtomName::WmDeleteWindow)) {
        owner_.CloseRequested();
    } else if (protocol == display_.Atom(AtomName::NetWmPing)) {
        // The same message back to the root window says that we are alive (EWMH).
        std::array<std::uint32_t, 5> words{};
        std::copy_n(std::begin(message.data.data32), words.size(), words.begin());
        display_.SendToManager(display_.Root(), AtomName::WmProtocols, words);
    }
}

} // namespace kqu::platform

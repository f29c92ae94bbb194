#include "platform/x11/X11Window.h"

#include "platform/x11/PointerState.h"
#include "platform/x11/X11WindowSystem.h"

#include <array>
#include <utility>

// The user's hand and the manager's messages.

namespace kqu::platform {

namespace {
constexpr xcb_button_t primaryButton = XCB_BUTTON_INDEX_1;

/// The steps of the wheel that the buttons from 4 on stand for.
constexpr xcb_button_t firstOfWheel = 4;
constexpr std::array<Point, 4> wheelSteps{{{0, -1}, {0, 1}, {-1, 0}, {1, 0}}};
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
        // A manager that ends lets go of the window; what it wrote on it stays.
        if (parent_ == display_.Root() && mapping_ == Mapping::Up)
            isManaged_ = false;
        return FinishWithdrawing();
    case XCB_PROPERTY_NOTIFY:
        return OnProperty(event.As<xcb_property_notify_event_t>().atom);
    case XCB_CLIENT_MESSAGE:
        return OnMessage(event.As<xcb_client_message_event_t>());
    default:
        return;
    }
}

void X11Window::OnPress(const xcb_button_press_event_t& press) {
    const Point onDevice{press.event_x, press.event_y};
    const Point inContent = onDevice / DeviceScale();
    if (press.detail >= firstOfWheel && press.detail < firstOfWheel + wheelSteps.size()) {
        const Point step = wheelSteps.at(press.detail - firstOfWheel);
        return owner_.WheelTurned(inContent, step.x, step.y);
    }
    if (press.detail != primaryButton || mapping_ != Mapping::Up)
        return;
    isPressed_ = true;
    hasMoved_ = false;
    handedOver_ = false;
    drag_ = Drag::Nobody;
    system_.pointer_->SetReleaseLost(false);
    pressTime_ = press.time;
    pointerAtPress_ = pointerTold_ = {press.root_x, press.root_y};
    contentAtPress_ = pointerAtPress_ - onDevice;
    owner_.ButtonPressed(inContent);
}

// A press alone changes nothing. From the first motion on the window's real place counts, wherever
// the manager put it when it was mapped.
void X11Window::StartMoving() {
    hasMoved_ = true;
    mapAnswers_ = 0;
    ++placeQuestion_;
    const bool isElsewhere = contentAtPress_ != place_.Believed();
    place_.Assume(contentAtPress_);
    if (isElsewhere && MoveWanted(ToLogical(contentAtPress_)))
        owner_.ContentChanged(wanted_);
}

void X11Window::OnRelease(const xcb_button_release_event_t& release) {
    if (release.detail != primaryButton)
        return;
    const Point pointer{release.root_x, release.root_y};
    if (std::exchange(handedOver_, false))
        // The button went up before the manager had the pointer: it would move the window for ever.
        SendMoveResize(pointer, MoveResize::Cancel);
    if (!isPressed_)
        return;
    if (drag_ == Drag::Nobody || pointer == pointerAtPress_)
        return EndPress(pointer);
    const std::weak_ptr<const bool> alive = alive_;
    if (!hasMoved_)
        StartMoving();
    // Whoever would have moved the window: it goes where the user has put it.
    if (!alive.expired())
        DragByOurselves(pointer);
    if (!alive.expired())
        EndPress(pointer);
}

void X11Window::EndPress(Point pointerOnRoot) {
    isPressed_ = false;
    drag_ = Drag::Nobody;
    owner_.ButtonReleased((pointerOnRoot - place_.Actual()) / DeviceScale());
}

void X11Window::OnMotion(const xcb_motion_notify_event_t& motion) {
    const Point at{motion.root_x, motion.root_y};
    if (handedOver_)
        pointerTold_ = at;
    if (!isPressed_ || (!hasMoved_ && at == pointerAtPress_))
        return;
    const std::weak_ptr<const bool> alive = alive_;
    if (!hasMoved_) {
        StartMoving();
        if (!alive.expired() && drag_ != Drag::Nobody)
            AskWhoDrags();
    }
    if (alive.expired())
        return;
    // Where the pointer is by now, for motions that waited long and one that arrives alike.
    const Point pointer = system_.pointer_->OnRoot();
    if (drag_ != Drag::Nobody)
        return DragTo(pointer);
    if (std::exchange(pointerTold_, pointer) != pointer)
        owner_.PointerMoved((pointer - place_.Actual()) / DeviceScale());
}

void X11Window::OnMessage(const xcb_client_message_event_t& message) {
    if (message.type != display_.Atom("WM_PROTOCOLS") || message.format != 32)
        return;
    const auto& words = message.data.data32;
    if (words[0] == display_.Atom("WM_DELETE_WINDOW"))
        owner_.CloseRequested();
    else if (words[0] == display_.Atom("_NET_WM_PING"))
        // The same message back to the root window says that we are alive (EWMH).
        display_.SendToManager(display_.Root(), "WM_PROTOCOLS",
                               {words[0], words[1], words[2], words[3], words[4]});
}

} // namespace kqu::platform

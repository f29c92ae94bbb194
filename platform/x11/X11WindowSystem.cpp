#include "platform/x11/X11WindowSystem.h"

#include "platform/CDeleter.h"
#include "platform/x11/DesktopScale.h"
#include "platform/x11/Monitors.h"
#include "platform/x11/PointerState.h"
#include "platform/x11/X11Window.h"

#include <algorithm>
#include <cstdlib>

namespace kqu::platform {

namespace {
/// So that a chatty server can't hold the loop.
constexpr int mostEventsAtOnce = 256;

/// The window that an event is for. Where a window hears of its own structure, the event begins
/// with it, as one for a property and a message do.
xcb_window_t WindowOf(const X11Event& event) {
    const bool isOfPointer = event.Type() >= XCB_BUTTON_PRESS && event.Type() <= XCB_MOTION_NOTIFY;
    return isOfPointer ? event.As<xcb_button_press_event_t>().event
                       : event.As<xcb_property_notify_event_t>().window;
}
} // namespace

std::unique_ptr<X11WindowSystem> X11WindowSystem::Open() {
    auto display = Display::Open();
    if (!display)
        return nullptr;
    return std::unique_ptr<X11WindowSystem>(new X11WindowSystem(std::move(display)));
}

X11WindowSystem::X11WindowSystem(std::unique_ptr<Display> display)
    : display_(std::move(display)),
      questions_(std::make_unique<Questions>(*display_)),
      monitors_(std::make_unique<Monitors>(*display_, *questions_,
                                           [this] { TellWindows(&X11Window::ScreensChanged); })),
      scale_(std::make_unique<DesktopScale>(*display_, *questions_,
                                            [this] { TellWindows(&X11Window::ScaleChanged); })),
      pointer_(std::make_unique<PointerState>(*display_)) {
    questions_->AwaitAll();
}

X11WindowSystem::~X11WindowSystem() = default;

std::unique_ptr<NativeWindow> X11WindowSystem::MakeWindow(const NativeWindowSettings& settings,
                                                          NativeWindowOwner& owner) {
    auto window = std::make_unique<X11Window>(*this, *display_, settings, owner);
    windows_[window->Id()] = window.get();
    return window;
}

std::vector<Rect> X11WindowSystem::Screens() {
    return monitors_->Screens();
}

Point X11WindowSystem::PointerPosition() {
    return (pointer_->OnRoot() - monitors_->Origin()) / DeviceScale();
}

bool X11WindowSystem::PrimaryButtonDown() {
    return pointer_->PrimaryButtonDown();
}

X11Window* X11WindowSystem::Find(std::uint32_t window) const {
    const auto found = windows_.find(window);
    return found == windows_.end() ? nullptr : found->second;
}

pollfd X11WindowSystem::Watch() const {
    return {isLost_ ? -1 : xcb_get_file_descriptor(display_->Connection()), POLLIN, 0};
}

std::optional<Moment> X11WindowSystem::Due() const {
    Moment first = Moment::max();
    for (const auto& [id, window] : windows_)
        first = std::min(first, window->Due());
    return isLost_ || first == Moment::max() ? std::nullopt : std::optional(first);
}

bool X11WindowSystem::Collect(EventQueue& queue) {
    if (isLost_)
        return false;
    pointer_->Forget();
    display_->Flush();
    const bool more = CollectFromServer(queue);
    const Moment now = std::chrono::steady_clock::now();
    for (const auto& [id, window] : windows_)
        if (window->TakeDue(now))
            queue.Post([this, due = id] {
                if (X11Window* const known = Find(due))
                    known->HandleDue();
            });
    if (!display_->IsLost())
        return more;
    isLost_ = true;
    queue.Post([this] {
        if (displayLost_)
            displayLost_();
    });
    return false;
}

bool X11WindowSystem::CollectFromServer(EventQueue& queue) {
    if (CollectEvents(queue, xcb_poll_for_event))
        return true;
    questions_->TakeIn();
    // What was received on the way to an answer may have been sent before it.
    if (CollectEvents(queue, xcb_poll_for_queued_event))
        return true;
    questions_->PostAll(queue);
    return false;
}

bool X11WindowSystem::CollectEvents(EventQueue& queue, NextEvent* next) {
    for (int count = 0; count < mostEventsAtOnce; ++count) {
        const CPointer<xcb_generic_event_t, std::free> received(next(display_->Connection()));
        if (!received)
            return false;
        const X11Event event{*received};
        questions_->PostBefore(event, queue);
        // Requests that failed are told as events of type 0. They fail for reasons beyond us (a
        // window manager that has just gone), and there is nothing to be done about them.
        if (event.Type() != 0)
            queue.Post([this, event] { Handle(event); });
    }
    return true;
}

void X11WindowSystem::Handle(const X11Event& event) {
    if (X11Window* const window = Find(WindowOf(event)))
        return window->Handle(event);
    monitors_->Handle(event);
    scale_->Handle(event);
}

void X11WindowSystem::TellWindows(void (X11Window::*what)()) {
    // Those that are told may make and drop windows.
    const auto known = windows_;
    for (const auto& [id, window] : known)
        if (Find(id) == window)
            (window->*what)();
}

} // namespace kqu::platform

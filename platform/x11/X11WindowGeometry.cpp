#include "platform/x11/X11Window.h"

#include "platform/x11/Monitors.h"
#include "platform/x11/PointerState.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <utility>

// Place and size of the content: what is asked for, what comes of it, and what is told of that.

namespace kqu::platform {

namespace {
/// What a manager did not carry out by then is taken as it stands.
constexpr std::chrono::milliseconds settleTime{250};
/// How long a manager may take over a request for a size.
constexpr std::chrono::seconds sizePatience{2};

constexpr unsigned int onlyPlace = XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y;
constexpr unsigned int onlySize = XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
} // namespace

Point X11Window::ToLogical(Point onRoot) const {
    return (onRoot - system_.monitors_->Origin()) / DeviceScale();
}

Point X11Window::ToRoot(Point onDesktop) const {
    return system_.monitors_->Origin() + onDesktop * DeviceScale();
}

Rect X11Window::WantedOnRoot() const {
    // A place between two logical pixels, where the user has put the window, is kept.
    const bool isThere = ToLogical(place_.Believed()) == wanted_.Origin();
    const Point place = isThere ? place_.Believed() : ToRoot(wanted_.Origin());
    const Size size = wanted_.Extent() * DeviceScale();
    return {place.x, place.y, size.width, size.height};
}

bool X11Window::MoveWanted(Point onDesktop) {
    const Rect moved{onDesktop.x, onDesktop.y, wanted_.width, wanted_.height};
    return std::exchange(wanted_, moved) != moved;
}

void X11Window::CommitGeometry(Moment now) {
    const Rect content = WantedOnRoot();
    const bool moves = content.Origin() != place_.Believed();
    const bool resizes = content.Extent() != sizeAsked_;
    if (!moves && !resizes)
        return;
    if (resizes && mapping_ == Mapping::Up) {
        // Finished pixels of the new size are in place before the server can want them, which may
        // be as soon as a manager sees the new limits.
        RebuildSurface(content.Extent());
        repaintAt_ = now + settleTime;
    }
    // A place that is not asked for is the manager's to keep.
    Configure(content, (moves ? onlyPlace : 0) | (resizes ? onlySize : 0));
    if (moves)
        place_.Request(content.Origin(), now);
    if (!resizes)
        return;
    sizeAsked_ = content.Extent();
    insisted_ = false;
    sizeCheckAt_ = now + sizePatience;
}

void X11Window::Configure(const Rect& onRoot, unsigned int which) const {
    // The hints go before the request: a manager holds a window to the limits that it knows.
    hints_.WritePlaceAndSize(onRoot);
    xcb_configure_window_value_list_t values{};
    values.x = onRoot.x - border_;
    values.y = onRoot.y - border_;
    values.width = static_cast<std::uint32_t>(onRoot.width);
    values.height = static_cast<std::uint32_t>(onRoot.height);
    // For a desktop without a manager; one that is there goes by the state.
    values.stack_mode = XCB_STACK_MODE_ABOVE;
    xcb_configure_window_aux(display_.Connection(), id_, static_cast<std::uint16_t>(which),
                             &values);
}

void X11Window::OnConfigured(const X11Event& event) {
    const auto configured = event.As<xcb_configure_notify_event_t>();
    const Moment now = std::chrono::steady_clock::now();
    // The server reports each change of the size or the border itself; what clients say of them may
    // be made up.
    if (!event.IsSynthetic()) {
        border_ = configured.border_width;
        TakeSize({configured.width, configured.height}, now);
    }
    // Where a window is put while it is not up is nobody's wish: managers move windows about when
    // they take them out of their frames.
    if (mapping_ != Mapping::Up)
        return;
    // A manager tells places on the root window (ICCCM 4.1.5), the server those in the frame, which
    // may be under way itself: then the place is looked up when all is quiet.
    const bool knowsPlace = event.IsSynthetic() || parent_ == display_.Root();
    if (!knowsPlace && !placeCheckAt_ && !awaitsMap_)
        placeCheckAt_ = now + settleTime;
    if (knowsPlace)
        TakePlace({configured.x + border_, configured.y + border_}, now);
    // A window that a manager moves goes where the pointer goes. If it goes farther than the
    // pointer, which stands still, the server has lost the pointer to a compositor, and never hears
    // of the release.
    const Point moved = place_.Actual() - contentAtPress_;
    if (handedOver_ && moved != Point{} && moved != pointerTold_ - pointerAtPress_ &&
        system_.pointer_->OnRoot() == pointerTold_)
        system_.pointer_->SetReleaseLost(true);
}

void X11Window::AskForPlace() {
    placeCheckAt_.reset();
    const auto question =
        xcb_translate_coordinates(display_.Connection(), id_, display_.Root(), 0, 0);
    Ask(question.sequence,
        [this, number = ++placeQuestion_, known = place_.Actual()](const void* answer) {
            const auto* reply = static_cast<const xcb_translate_coordinates_reply_t*>(answer);
            // A place that was told since is known better: a manager may tell it before it moves
            // the window.
            if (number == placeQuestion_ && known != place_.Actual())
                placeCheckAt_ = std::chrono::steady_clock::now() + settleTime;
            else if (number == placeQuestion_ && reply != nullptr)
                OnPlaceAnswered({reply->dst_x, reply->dst_y});
        });
}

void X11Window::OnPlaceAnswered(Point onRoot) {
    const Moment now = std::chrono::steady_clock::now();
    TakePlace(onRoot, now);
    if (onRoot == place_.Believed())
        mapAnswers_ = 0;
    if (mapAnswers_ == 0 || --mapAnswers_ == 0)
        return;
    // The manager has put the window elsewhere, perhaps for the sake of a border. It is asked once
    // more; what it does then is the rest of its answer to the map.
    Configure(WantedOnRoot(), onlyPlace);
    placeCheckAt_ = now + settleTime;
}

void X11Window::TakePlace(Point onRoot, Moment now) {
    // The manager's answer to a map is not the user's doing, and not to be taken for it: the wanted
    // place stays the wanted one, or the window would creep with each return.
    if (mapAnswers_ > 0)
        place_.Acknowledge(onRoot);
    else
        place_.Observe(onRoot, now);
}

// The user sizes the window by its own grip only. A manager that gives it another size is asked for
// the wanted one again; one that insists on its own size is left in peace.
void X11Window::TakeSize(Size size, Moment now) {
    if (std::exchange(actualSize_, size) != size && mapping_ == Mapping::Up)
        repaintAt_ = std::min(repaintAt_.value_or(now), now);
    if (size == sizeAsked_) {
        sizeCheckAt_.reset();
        insisted_ = false;
    } else if (!insisted_ && !sizeCheckAt_) {
        sizeCheckAt_ = now + settleTime;
    }
}

void X11Window::InsistOnSize() {
    sizeCheckAt_.reset();
    if (actualSize_ != sizeAsked_ && !std::exchange(insisted_, true))
        Configure(WantedOnRoot(), onlySize);
}

void X11Window::ScreensChanged() {
    // The window stays where it is on the glass; it is the desktop's origin that moved.
    if (mapping_ != Mapping::Up)
        return;
    Point onDesktop = ToLogical(place_.Believed());
    const Rect content{onDesktop.x, onDesktop.y, wanted_.width, wanted_.height};
    const std::vector<Rect> screens = system_.Screens();
    const bool isSeen = std::any_of(screens.begin(), screens.end(), [&](const Rect& screen) {
        return !Intersection(screen, content).IsEmpty();
    });
    // Without a manager nobody else brings it back from a monitor that went away.
    if (!isManaged_ && !isSeen)
        onDesktop = {std::clamp(onDesktop.x, 0, std::max(0, screens[0].width - content.width)),
                     std::clamp(onDesktop.y, 0, std::max(0, screens[0].height - content.height))};
    if (MoveWanted(onDesktop))
        owner_.ContentChanged(wanted_);
}

void X11Window::ScaleChanged() {
    // The next Commit gives it the new size, at the same place in logical pixels.
    if (mapping_ != Mapping::Up)
        place_.Assume(ToRoot(wanted_.Origin()));
    owner_.ScaleChanged();
}

Moment X11Window::Due() const {
    const bool isUp = mapping_ == Mapping::Up;
    Moment first = Moment::max();
    if (duePosted_)
        return first;
    // Only a window that can be seen is waited for.
    if (isUp)
        for (const auto& due : {repaintAt_, sizeCheckAt_, placeCheckAt_, place_.Due()})
            first = std::min(first, due.value_or(first));
    if (isUp ? !isMapped_ && !IsMinimised() : mapping_ == Mapping::Withdrawing && WantsToBeUp())
        first = std::min(first, managerDueAt_);
    return first;
}

bool X11Window::TakeDue(Moment now) {
    return Due() <= now && !std::exchange(duePosted_, true);
}

void X11Window::HandleDue() {
    const Moment now = std::chrono::steady_clock::now();
    duePosted_ = false;
    FinishWithdrawing();
    if (mapping_ != Mapping::Up)
        return;
    // The manager has lost the request, or taken an older withdrawal for a younger one. The next
    // Commit maps the window anew.
    if (!isMapped_ && !IsMinimised() && now >= managerDueAt_)
        mapping_ = Mapping::Withdrawn;
    if (sizeCheckAt_ && now >= *sizeCheckAt_)
        InsistOnSize();
    if (placeCheckAt_ && now >= *placeCheckAt_)
        AskForPlace();
    // A wish of the owner that waits for Commit is younger than whatever is known here.
    if (WantedOnRoot().Origin() != place_.Believed())
        return;
    if (const auto place = place_.Settle(now)) {
        MoveWanted(ToLogical(*place));
        owner_.ContentChanged(wanted_);
    }
}

} // namespace kqu::platform

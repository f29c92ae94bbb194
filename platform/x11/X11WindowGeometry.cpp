#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <chrono>
#include <utility>

// Place and size of the content: what is asked for, what comes of it, and what is told of that.

namespace kqu::platform {

namespace {
/// What a manager did not carry out by then is taken as it stands.
constexpr std::chrono::milliseconds settleTime{250};
} // namespace

Rect X11Window::WantedOnRoot() const {
    const Point place = wanted_.onDesktop + system_.Origin();
    return {place.x, place.y, wanted_.size.width, wanted_.size.height};
}

void X11Window::CommitGeometry(Moment now) {
    const Rect content = WantedOnRoot();
    const bool moves = content.Origin() != place_.Believed();
    const bool resizes = content.Extent() != size_.Believed();
    if (!moves && !resizes)
        return;
    if (resizes && mapping_ == Mapping::Up) {
        // Finished pixels of the new size are in place before the server can want them, which may
        // be as soon as a manager sees the new limits.
        surface_.Rebuild(content.Extent(), owner_);
        changed_ = {};
        hasNewContentForIcon_ = true;
        repaintAt_ = now + settleTime;
    }
    // The hints go before the request: a manager holds a window to the limits that it knows.
    hints_.WritePlaceAndSize(content);
    // A place that is not asked for is the manager's to keep.
    Configure(content, static_cast<std::uint16_t>(
                           (moves ? XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y : 0) |
                           (resizes ? XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT : 0)));
    if (moves)
        place_.Request(content.Origin(), now);
    if (resizes)
        size_.Request(content.Extent(), now);
}

void X11Window::Configure(const Rect& onRoot, std::uint16_t which) const {
    xcb_configure_window_value_list_t values{};
    values.x = onRoot.x;
    values.y = onRoot.y;
    values.width = static_cast<std::uint32_t>(onRoot.width);
    values.height = static_cast<std::uint32_t>(onRoot.height);
    xcb_configure_window_aux(display_.Connection(), id_.value, which, &values);
}

void X11Window::OnConfigured(const X11Event& event) {
    const auto configured = event.As<xcb_configure_notify_event_t>();
    const Moment now = std::chrono::steady_clock::now();
    const Size size{configured.width, configured.height};
    // No window has a side of 0: some client made this event up.
    if (size.width == 0 || size.height == 0)
        return;
    if (mapping_ != Mapping::Up) {
        // Where a window is put while it is not up is nobody's wish: managers move windows about
        // when they take them out of their frames.
        size_.Acknowledge(size, now);
        return;
    }
    // A manager tells places on the root window (ICCCM 4.1.5), the server those in the frame, which
    // may be under way itself: then the place is looked up when all is quiet.
    const bool knowsPlace = event.IsSynthetic() || parent_ == display_.Root();
    if (!knowsPlace && !placeCheckAt_ && !awaitsMap_)
        placeCheckAt_ = now + settleTime;
    const bool moved = knowsPlace && TakePlace({configured.x, configured.y}, now);
    const bool resized = TakeSize(size, now);
    if (moved || resized)
        TellContent();
}

void X11Window::AskForPlace() {
    placeCheckAt_.reset();
    const unsigned int question =
        xcb_translate_coordinates(display_.Connection(), id_.value, display_.Root(), 0, 0).sequence;
    placeAsked_ = PlaceQuestion{question, place_.Actual()};
    Ask(question, [this, question](const void* reply) {
        if (placeAsked_ && placeAsked_->sequence == question)
            OnPlaceAnswered(static_cast<const xcb_translate_coordinates_reply_t*>(reply));
    });
}

void X11Window::OnPlaceAnswered(const xcb_translate_coordinates_reply_t* reply) {
    const Moment now = std::chrono::steady_clock::now();
    // All that was told until now was the manager's answer to the map; what follows is not.
    const bool answersMap = std::exchange(answersMap_, false);
    // A place that was told since is known better: a manager may tell it before it moves the
    // window.
    if (std::exchange(placeAsked_, {})->actual != place_.Actual()) {
        placeCheckAt_ = now + settleTime;
        return;
    }
    if (reply == nullptr)
        return;
    const Point onRoot{reply->dst_x, reply->dst_y};
    if (answersMap)
        place_.Acknowledge(onRoot, now);
    else if (TakePlace(onRoot, now))
        TellContent();
}

bool X11Window::TakePlace(Point onRoot, Moment now) {
    // The manager's answer to a map is not the user's doing, and not to be taken for it: the wanted
    // place stays the wanted one, or the window would creep with each return. And a wish of the
    // owner that waits for Commit is younger than whatever is told here.
    if (answersMap_ || WantedOnRoot().Origin() != place_.Believed()) {
        place_.Acknowledge(onRoot, now);
        return false;
    }
    if (!place_.Observe(onRoot, now))
        return false;
    wanted_.onDesktop = onRoot - system_.Origin();
    return true;
}

bool X11Window::TakeSize(Size size, Moment now) {
    if (wanted_.size != size_.Believed()) {
        size_.Acknowledge(size, now);
        return false;
    }
    if (!size_.Observe(size, now))
        return false;
    wanted_.size = size;
    return true;
}

bool X11Window::SettleGeometry(Moment now) {
    const bool keepsPlace = WantedOnRoot().Origin() != place_.Believed();
    const bool keepsSize = wanted_.size != size_.Believed();
    const auto place = place_.Settle(now);
    const auto size = size_.Settle(now);
    if (place && !keepsPlace)
        wanted_.onDesktop = *place - system_.Origin();
    if (size && !keepsSize)
        wanted_.size = *size;
    return (place && !keepsPlace) || (size && !keepsSize);
}

void X11Window::TellContent() {
    owner_.ContentChanged(
        {wanted_.onDesktop.x, wanted_.onDesktop.y, wanted_.size.width, wanted_.size.height});
}

void X11Window::ScreensChanged() {
    // The window stays where it is on the glass; it is the desktop's origin that moved.
    if (mapping_ != Mapping::Up)
        return;
    const Point onDesktop = place_.Believed() - system_.Origin();
    if (std::exchange(wanted_.onDesktop, onDesktop) != onDesktop)
        TellContent();
}

std::optional<Moment> X11Window::Due() const {
    if (duePosted_)
        return std::nullopt;
    std::optional<Moment> first = repaintAt_;
    const auto noLaterThan = [&first](std::optional<Moment> moment) {
        if (moment && (!first || *moment < *first))
            first = moment;
    };
    // Only a window that can be seen is waited for.
    if (mapping_ == Mapping::Up) {
        noLaterThan(placeCheckAt_);
        noLaterThan(place_.Due());
        noLaterThan(size_.Due());
    }
    if (mapping_ == Mapping::Withdrawing && wantsToBeUp_)
        noLaterThan(withdrawnAtLatest_);
    return first;
}

bool X11Window::TakeDue(Moment now) {
    const auto due = Due();
    duePosted_ = duePosted_ || (due && *due <= now);
    return due && duePosted_;
}

void X11Window::HandleDue() {
    const Moment now = std::chrono::steady_clock::now();
    duePosted_ = false;
    if (mapping_ == Mapping::Withdrawing && now >= withdrawnAtLatest_)
        FinishWithdrawing();
    if (repaintAt_ && now >= *repaintAt_)
        RepaintAfterResize();
    if (mapping_ != Mapping::Up)
        return;
    if (placeCheckAt_ && now >= *placeCheckAt_)
        AskForPlace();
    if (SettleGeometry(now))
        TellContent();
}

void X11Window::RepaintAfterResize() {
    repaintAt_.reset();
    // A manager may have given the window another size, or none at all, and then the server had no
    // reason to paint.
    const Size extent{std::max(wanted_.size.width, size_.Actual().width),
                      std::max(wanted_.size.height, size_.Actual().height)};
    if (surface_.Extent() != extent)
        surface_.Rebuild(extent, owner_);
    surface_.Repaint();
}

} // namespace kqu::platform

#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <utility>
#include <xcb/xcb_icccm.h>

// When the window is on the screen, and what its window manager makes of that. Withdrawing is more
// than unmapping: the manager lets go of the window, takes its frame away and forgets all about it
// (ICCCM 4.1.4), so each map is like the first.

namespace kqu::platform {

namespace {
/// How long a manager may take over a map, or over letting go of a window.
constexpr std::chrono::seconds managerLimit{5};
/// How long after a map the place that the manager gives the window is its answer to that map.
constexpr std::chrono::milliseconds mapAnswerTime{250};
} // namespace

void X11Window::Map(Moment now) {
    const Rect content = WantedOnRoot();
    RebuildSurface(content.Extent());
    hints_.WriteWishes(stayIconic_);
    hints_.WriteAttributes(attributes_);
    iconWanted_ = true;
    CommitIcon();
    Configure(content, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT |
                           (settings_.globalFloating ? XCB_CONFIG_WINDOW_STACK_MODE : 0));
    place_.Assume(content.Origin());
    xcb_map_window(display_.Connection(), id_);
    mapping_ = Mapping::Up;
    awaitsMap_ = true;
    mapAnswers_ = 2;
    managerDueAt_ = now + managerLimit;
    sizeAsked_ = content.Extent();
    insisted_ = false;
    sizeCheckAt_.reset();
    placeCheckAt_.reset();
    ++placeQuestion_;
}

void X11Window::Withdraw(Moment now) {
    xcb_unmap_window(display_.Connection(), id_);
    display_.SendToRoot(
        xcb_unmap_notify_event_t{XCB_UNMAP_NOTIFY, 0, 0, display_.Root(), id_, 0, {}});
    // A manager that has not yet let go would wipe out what the next map needs.
    mapping_ = isManaged_ || awaitsMap_ ? Mapping::Withdrawing : Mapping::Withdrawn;
    managerDueAt_ = now + managerLimit;
    repaintAt_.reset();
    placeCheckAt_.reset();
    ++placeQuestion_;
}

void X11Window::FinishWithdrawing() {
    // A manager that reparents a window while that is mapped maps it again, and would not know it.
    const bool isLetGo = !isManaged_ && parent_ == display_.Root();
    if (mapping_ != Mapping::Withdrawing ||
        (!isLetGo && std::chrono::steady_clock::now() < managerDueAt_))
        return;
    // The next Commit maps it anew if it is wanted by then.
    mapping_ = Mapping::Withdrawn;
    awaitsMap_ = false;
}

void X11Window::OnMapped() {
    isMapped_ = true;
    const bool isAwaited = std::exchange(awaitsMap_, false);
    if (mapping_ == Mapping::Up) {
        if (isAwaited)
            placeCheckAt_ = std::chrono::steady_clock::now() + mapAnswerTime;
        return;
    }
    // A slow manager may map what has been withdrawn since, and the server maps the windows of a
    // manager that dies.
    xcb_unmap_window(display_.Connection(), id_);
    if (!isAwaited && parent_ == display_.Root())
        isManaged_ = false;
}

void X11Window::OnUnmapped() {
    isMapped_ = false;
    managerDueAt_ = std::chrono::steady_clock::now() + managerLimit;
    FinishWithdrawing();
    // The pointer's grab ends with the window: nobody will tell of the release.
    if (isPressed_)
        EndPress(pointerTold_);
}

void X11Window::OnProperty(xcb_atom_t property) {
    if (property == display_.Atom("_NET_WM_STATE"))
        return Ask(
            display_.AskForWords(id_, "_NET_WM_STATE", XCB_ATOM_ATOM),
            [this](const void* reply) { OnNetState(Display::WordsOf(reply, XCB_ATOM_ATOM)); });
    if (property != display_.Atom("WM_STATE"))
        return;
    // Until the answer is there.
    isManaged_ = true;
    Ask(display_.AskForWords(id_, "WM_STATE", property), [this, property](const void* reply) {
        const Words words = Display::WordsOf(reply, property);
        OnState(words.empty() ? std::uint32_t{XCB_ICCCM_WM_STATE_WITHDRAWN} : words.front());
    });
}

void X11Window::OnState(std::uint32_t state) {
    isIconic_ = state == XCB_ICCCM_WM_STATE_ICONIC;
    isManaged_ = state != XCB_ICCCM_WM_STATE_WITHDRAWN;
    // A window that the user has minimised comes back minimised after it was hidden.
    if (isManaged_ && mapping_ == Mapping::Up && std::exchange(stayIconic_, isIconic_) != isIconic_)
        ChangeState(isIconic_ ? NetStateChange::Remove : NetStateChange::Add,
                    "_NET_WM_STATE_SKIP_TASKBAR");
    FinishWithdrawing();
}

void X11Window::OnNetState(const Words& states) {
    const auto has = [&](AtomName state) {
        return std::find(states.begin(), states.end(), display_.Atom(state)) != states.end();
    };
    isHidden_ = has("_NET_WM_STATE_HIDDEN");
    if (mapping_ != Mapping::Up)
        return;
    // The panel is as large as its rows, wherever it stands: it gives a maximised state back.
    if (has("_NET_WM_STATE_MAXIMIZED_HORZ") || has("_NET_WM_STATE_MAXIMIZED_VERT"))
        ChangeState(NetStateChange::Remove, "_NET_WM_STATE_MAXIMIZED_HORZ",
                    display_.Atom("_NET_WM_STATE_MAXIMIZED_VERT"));
    // A manager demands it for a window that takes no focus when it is mapped.
    if (has("_NET_WM_STATE_DEMANDS_ATTENTION"))
        ChangeState(NetStateChange::Remove, "_NET_WM_STATE_DEMANDS_ATTENTION");
}

void X11Window::ChangeState(NetStateChange change, AtomName one, xcb_atom_t other) const {
    display_.SendToManager(
        id_, "_NET_WM_STATE",
        {static_cast<std::uint32_t>(change), display_.Atom(one), other, fromApplication});
}

} // namespace kqu::platform

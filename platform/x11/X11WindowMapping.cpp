#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <utility>
#include <xcb/xcb_icccm.h>

// When the window is on the screen, and what its window manager makes of that. Withdrawing is more
// than unmapping: the manager lets go of the window, takes its frame away and forgets all about it
// (ICCCM 4.1.4), so each map is like the first.

namespace kqu::platform {

namespace {
/// How long a manager may take over letting go of a window.
constexpr std::chrono::seconds withdrawalLimit{5};
/// How long a manager may take over a map before it is asked again.
constexpr std::chrono::seconds mapLimit{5};
/// How long after a map the place that the manager gives the window is its answer to that map.
constexpr std::chrono::milliseconds mapAnswerTime{250};
} // namespace

void X11Window::Map(Moment now) {
    const Rect content = WantedOnRoot();
    surface_.Rebuild(content.Extent(), owner_);
    changed_ = {};
    hints_.WriteWishes(stayIconic_);
    hints_.WriteAttributes(attributes_);
    hints_.WritePlaceAndSize(content);
    iconWanted_ = true;
    CommitIcon();
    Configure(content, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT);
    if (settings_.globalFloating) {
        // For a desktop without a manager; one that is there goes by the state.
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(display_.Connection(), id_.value, XCB_CONFIG_WINDOW_STACK_MODE,
                             &above);
    }
    place_.Assume(content.Origin());
    xcb_map_window(display_.Connection(), id_.value);
    mapping_ = Mapping::Up;
    awaitsMap_ = true;
    answersMap_ = true;
    corrected_ = false;
    mapAgainAt_ = now + mapLimit;
    sizeAsked_ = content.Extent();
    insisted_ = false;
    sizeCheckAt_.reset();
    placeCheckAt_.reset();
    placeAsked_.reset();
}

void X11Window::Withdraw(Moment now) {
    xcb_unmap_window(display_.Connection(), id_.value);
    xcb_unmap_notify_event_t unmapped{};
    unmapped.response_type = XCB_UNMAP_NOTIFY;
    unmapped.event = display_.Root();
    unmapped.window = id_.value;
    std::array<char, 32> bytes{};
    std::memcpy(bytes.data(), &unmapped, sizeof unmapped);
    xcb_send_event(display_.Connection(), 0, display_.Root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   bytes.data());
    // A manager that has not yet let go would wipe out what the next map needs.
    const bool mayBeManaged = isManaged_ || awaitsMap_ || statesAsked_ > 0;
    mapping_ = mayBeManaged ? Mapping::Withdrawing : Mapping::Withdrawn;
    withdrawnAtLatest_ = now + withdrawalLimit;
    repaintAt_.reset();
    placeCheckAt_.reset();
    placeAsked_.reset();
}

void X11Window::FinishWithdrawing() {
    if (mapping_ != Mapping::Withdrawing)
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
    xcb_unmap_window(display_.Connection(), id_.value);
    if (!isAwaited && parent_ == display_.Root())
        isManaged_ = false;
}

void X11Window::OnUnmapped() {
    isMapped_ = false;
    mapAgainAt_ = std::chrono::steady_clock::now() + mapLimit;
    if (!isManaged_)
        FinishWithdrawing();
    // The pointer's grab ends with the window: nobody will tell of the release.
    if (isPressed_)
        EndPress(pointerTold_);
}

void X11Window::OnProperty(xcb_atom_t property) {
    const bool isState = property == display_.Atom(AtomName::WmState);
    if (!isState && property != display_.Atom(AtomName::NetWmState))
        return;
    const xcb_atom_t type = isState ? property : xcb_atom_t{XCB_ATOM_ATOM};
    statesAsked_ += isState ? 1 : 0;
    Ask(display_.AskForWords(id_.value, property, type).sequence, [this, isState,
                                                                   type](const void* reply) {
        const auto words =
            Display::WordsOf(static_cast<const xcb_get_property_reply_t*>(reply), type);
        statesAsked_ -= isState ? 1 : 0;
        if (isState)
            OnState(words.empty() ? std::uint32_t{XCB_ICCCM_WM_STATE_WITHDRAWN} : words.front());
        else
            OnNetState(words);
    });
}

void X11Window::OnState(std::uint32_t state) {
    isIconic_ = state == XCB_ICCCM_WM_STATE_ICONIC;
    isManaged_ = state != XCB_ICCCM_WM_STATE_WITHDRAWN;
    // A window that the user has minimised comes back minimised after it was hidden.
    if (isManaged_ && mapping_ == Mapping::Up && std::exchange(stayIconic_, isIconic_) != isIconic_)
        ChangeState(isIconic_ ? NetStateChange::Remove : NetStateChange::Add,
                    AtomName::NetWmStateSkipTaskbar, AtomName::NetWmStateSkipTaskbar);
    if (!isManaged_)
        FinishWithdrawing();
}

void X11Window::OnNetState(const std::vector<std::uint32_t>& states) {
    const auto has = [&](AtomName state) {
        return std::find(states.begin(), states.end(), display_.Atom(state)) != states.end();
    };
    isHidden_ = has(AtomName::NetWmStateHidden);
    if (mapping_ != Mapping::Up)
        return;
    // The panel is as large as its rows, wherever it stands: it gives a maximised state back.
    if (has(AtomName::NetWmStateMaximizedHorz) || has(AtomName::NetWmStateMaximizedVert))
        ChangeState(NetStateChange::Remove, AtomName::NetWmStateMaximizedHorz,
                    AtomName::NetWmStateMaximizedVert);
    // A manager demands it for a window that takes no focus when it is mapped.
    if (has(AtomName::NetWmStateDemandsAttention))
        ChangeState(NetStateChange::Remove, AtomName::NetWmStateDemandsAttention,
                    AtomName::NetWmStateDemandsAttention);
}

void X11Window::ChangeState(NetStateChange change, AtomName one, AtomName other) const {
    constexpr std::uint32_t fromApplication = 1;
    display_.SendToManager(id_.value, AtomName::NetWmState,
                           {static_cast<std::uint32_t>(change), display_.Atom(one),
                            display_.Atom(other), fromApplication});
}

} // namespace kqu::platform

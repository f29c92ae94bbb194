#include "platform/x11/X11Window.h"

#include "platform/x11/IconScaling.h"
#include "platform/x11/PointerState.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kqu::platform {

namespace {
/// The largest side of a window by the protocol, at the largest scale.
constexpr int largest = 32767 / 3;
/// Sides of the icons that are offered.
constexpr std::array iconSides{48, 32};

Size Possible(Size size) {
    return {std::clamp(size.width, 1, largest), std::clamp(size.height, 1, largest)};
}

Rect RectOf(Point at, Size size) {
    return {at.x, at.y, size.width, size.height};
}

xcb_window_t MakeWindow(const Display& display, const Rect& onRoot) {
    const xcb_window_t window = xcb_generate_id(display.Connection());
    // Nothing of the old pixels is kept at a change of size: the server paints the background.
    const std::array<std::uint32_t, 5> values{
        display.Format().PixelOf(0xFFFFFF), 0, XCB_GRAVITY_BIT_FORGET,
        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
            XCB_EVENT_MASK_BUTTON_1_MOTION | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
            XCB_EVENT_MASK_PROPERTY_CHANGE,
        display.Colormap()};
    xcb_create_window(display.Connection(), display.Format().Depth(), window, display.Root(),
                      static_cast<std::int16_t>(onRoot.x), static_cast<std::int16_t>(onRoot.y),
                      static_cast<std::uint16_t>(onRoot.width),
                      static_cast<std::uint16_t>(onRoot.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      display.Visual(),
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                          XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                      values.data());
    return window;
}
} // namespace

X11Window::X11Window(X11WindowSystem& system, const Display& display,
                     const NativeWindowSettings& settings, NativeWindowOwner& owner)
    : system_(system),
      display_(display),
      owner_(owner),
      settings_(settings),
      wanted_(RectOf(settings.content.Origin(), Possible(settings.content.Extent()))),
      id_(MakeWindow(display, RectOf(ToRoot(wanted_.Origin()), wanted_.Extent() * DeviceScale()))),
      hints_(display, id_, settings_),
      surface_(display, id_),
      place_(ToRoot(wanted_.Origin())),
      sizeAsked_(wanted_.Extent() * DeviceScale()),
      actualSize_(sizeAsked_),
      parent_(display.Root()) {
    hints_.WriteIdentity();
    hints_.WriteWishes(false);
    hints_.WritePlaceAndSize(WantedOnRoot());
    hints_.WriteAttributes(attributes_);
}

X11Window::~X11Window() {
    system_.windows_.erase(id_);
    xcb_destroy_window(display_.Connection(), id_);
    display_.Flush();
}

void X11Window::Ask(unsigned int sequence, Questions::Answer answer) {
    system_.questions_->Ask(
        sequence, [alive = std::weak_ptr(alive_), answer = std::move(answer)](const void* reply) {
            if (!alive.expired())
                answer(reply);
        });
}

void X11Window::SetSize(Size size) {
    wanted_ = RectOf(wanted_.Origin(), Possible(size));
}

void X11Window::Commit() {
    const Moment now = std::chrono::steady_clock::now();
    if (mapping_ == Mapping::Up && !WantsToBeUp())
        Withdraw(now);
    CommitProperties();
    // While another client holds the server, what is sent fills the socket, and the program would
    // wait for the other client.
    if (!NeedsPixels() || system_.pointer_->ServerAnswers()) {
        CommitGeometry(now);
        CommitContent(now);
        CommitIcon();
        if (mapping_ == Mapping::Withdrawn && WantsToBeUp())
            Map(now);
    }
    display_.Flush();
}

bool X11Window::NeedsPixels() const {
    if (mapping_ != Mapping::Up)
        return mapping_ == Mapping::Withdrawn && WantsToBeUp();
    return !changed_.IsEmpty() || iconWanted_ || repaintAt_ ||
           WantedOnRoot().Extent() != sizeAsked_;
}

void X11Window::CommitProperties() {
    if (std::exchange(knownTitle_, title_) != title_)
        hints_.WriteTitle(title_);
    if (std::exchange(knownAttributes_, attributes_) != attributes_)
        hints_.WriteAttributes(attributes_);
    if (std::exchange(knownAlpha_, alpha_) != alpha_)
        hints_.WriteOpacity(alpha_);
}

void X11Window::RebuildSurface(Size extent) {
    surface_.Rebuild(extent, owner_);
    changed_ = {};
    hasNewContentForIcon_ = true;
}

void X11Window::CommitContent(Moment now) {
    // A window that is not up gets all of its content just before it is mapped.
    if (mapping_ != Mapping::Up)
        return;
    // A manager may have made the window larger than it asked to be.
    const Size extent{std::max(sizeAsked_.width, actualSize_.width),
                      std::max(sizeAsked_.height, actualSize_.height)};
    const Size has = surface_.Extent();
    const bool repaints = repaintAt_ && now >= *repaintAt_;
    const bool grows = has.width < extent.width || has.height < extent.height;
    if (repaints)
        repaintAt_.reset();
    if (grows || (repaints && has != extent))
        RebuildSurface(extent);
    if (const Rect area = std::exchange(changed_, {}); !area.IsEmpty()) {
        surface_.Update(RectOf(area.Origin() * DeviceScale(), area.Extent() * DeviceScale()),
                        owner_);
        hasNewContentForIcon_ = true;
    }
    if (repaints || grows)
        surface_.Repaint();
}

void X11Window::CommitIcon() {
    if (!std::exchange(iconWanted_, false) || !std::exchange(hasNewContentForIcon_, false))
        return;
    const Frame frame = owner_.CurrentFrame(0, owner_.FrameExtent().height);
    Words icons;
    for (const int side : iconSides) {
        const Words icon = ScaledIcon(frame, side);
        icons.insert(icons.end(), icon.begin(), icon.end());
    }
    display_.SetWords(id_, "_NET_WM_ICON", XCB_ATOM_CARDINAL, icons);
}

} // namespace kqu::platform

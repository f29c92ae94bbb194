#include "platform/x11/X11Window.h"

#include "platform/interfaces/DeviceScale.h"
#include "platform/x11/IconScaling.h"
#include "platform/x11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace kqu::platform {

namespace {
/// The limits of the protocol.
constexpr int largestSide = 32767;
constexpr int largestScale = 3;
/// Sides of the icons that are offered.
constexpr std::array iconSides{48, 32};

Size Possible(Size size) {
    constexpr int largest = largestSide / largestScale;
    return {std::clamp(size.width, 1, largest), std::clamp(size.height, 1, largest)};
}

Rect RectOf(Point at, Size size) {
    return {at.x, at.y, size.width, size.height};
}
} // namespace

X11Window::ServerWindow::ServerWindow(const Display& onDisplay, const Rect& onRoot)
    : display(onDisplay), value(xcb_generate_id(onDisplay.Connection())) {
    xcb_create_window_value_list_t values{};
    values.background_pixel = display.Format().PixelOf(0xFFFFFF);
    values.border_pixel = 0;
    // Nothing of the old pixels is kept at a change of size: the server paints the background.
    values.bit_gravity = XCB_GRAVITY_BIT_FORGET;
    values.event_mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                        XCB_EVENT_MASK_BUTTON_1_MOTION | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                        XCB_EVENT_MASK_PROPERTY_CHANGE;
    values.colormap = display.Colormap();
    xcb_create_window_aux(display.Connection(), display.Format().depth, value, display.Root(),
                          static_cast<std::int16_t>(onRoot.x), static_cast<std::int16_t>(onRoot.y),
                          static_cast<std::uint16_t>(onRoot.width),
                          static_cast<std::uint16_t>(onRoot.height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, display.Visual(),
                          XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                              XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                          &values);
}

X11Window::ServerWindow::~ServerWindow() {
    xcb_destroy_window(display.Connection(), value);
    display.Flush();
}

X11Window::X11Window(X11WindowSystem& system, const Display& display,
                     const NativeWindowSettings& settings, NativeWindowOwner& owner)
    : system_(system),
      display_(display),
      owner_(owner),
      settings_(settings),
      wanted_{settings.content.Origin(), Possible(settings.content.Extent())},
      id_(display, RectOf(ToRoot(wanted_.onDesktop), wanted_.size * DeviceScale())),
      hints_(display, id_.value, settings_),
      surface_(display, id_.value),
      place_(ToRoot(wanted_.onDesktop)),
      sizeAsked_(wanted_.size * DeviceScale()),
      actualSize_(sizeAsked_),
      parent_(display.Root()) {
    hints_.WriteIdentity();
    hints_.WriteWishes(false);
    hints_.WritePlaceAndSize(WantedOnRoot());
    hints_.WriteAttributes(attributes_);
}

X11Window::~X11Window() {
    system_.Forget(id_.value);
}

void X11Window::Ask(unsigned int sequence, Questions::Answer answer) {
    system_.Ask(sequence,
                [alive = std::weak_ptr(alive_), answer = std::move(answer)](const void* reply) {
                    if (!alive.expired())
                        answer(reply);
                });
}

void X11Window::SetTitle(std::string_view title) {
    newTitle_ = title;
}

void X11Window::SetSize(Size size) {
    wanted_.size = Possible(size);
}

void X11Window::ChangeAttributes(std::uint32_t set, std::uint32_t clear) {
    attributes_ = (attributes_ & ~clear) | set;
}

void X11Window::SetAlpha(float alpha) {
    alpha_ = alpha;
}

void X11Window::Present(const Rect& changed) {
    changed_ = Union(changed_, changed);
}

void X11Window::Commit() {
    const Moment now = std::chrono::steady_clock::now();
    wantsToBeUp_ = isShown_ && alpha_ > 0.0F;
    if (mapping_ == Mapping::Up && !wantsToBeUp_)
        Withdraw(now);
    CommitProperties();
    if (!NeedsPixels() || system_.ServerAnswers()) {
        CommitGeometry(now);
        CommitContent(now);
        CommitIcon();
        if (mapping_ == Mapping::Withdrawn && wantsToBeUp_)
            Map(now);
    }
    display_.Flush();
}

bool X11Window::NeedsPixels() const {
    if (mapping_ != Mapping::Up)
        return mapping_ == Mapping::Withdrawn && wantsToBeUp_;
    return !changed_.IsEmpty() || iconWanted_ || repaintAt_ ||
           WantedOnRoot().Extent() != sizeAsked_;
}

void X11Window::CommitProperties() {
    if (newTitle_ && *newTitle_ != title_) {
        title_ = *newTitle_;
        hints_.WriteTitle(title_);
    }
    newTitle_.reset();
    if (std::exchange(knownAttributes_, attributes_) != attributes_)
        hints_.WriteAttributes(attributes_);
    if (std::exchange(knownAlpha_, alpha_) != alpha_)
        hints_.WriteOpacity(alpha_);
}

void X11Window::CommitContent(Moment now) {
    if (!changed_.IsEmpty())
        hasNewContentForIcon_ = true;
    // A window that is not up gets all of its content just before it is mapped.
    if (mapping_ != Mapping::Up)
        return;
    const Rect logical = std::exchange(changed_, {});
    const Rect area = RectOf(logical.Origin() * DeviceScale(), logical.Extent() * DeviceScale());
    // A manager may have made the window larger than it asked to be.
    const Size extent{std::max(sizeAsked_.width, actualSize_.width),
                      std::max(sizeAsked_.height, actualSize_.height)};
    const bool repaints = repaintAt_ && now >= *repaintAt_;
    if (repaints)
        repaintAt_.reset();
    const Size has = surface_.Extent();
    if (has.width < extent.width || has.height < extent.height || (repaints && has != extent))
        surface_.Rebuild(extent, owner_);
    else if (!repaints) {
        if (!area.IsEmpty())
            surface_.Update(area, owner_);
        return;
    }
    surface_.Repaint();
}

void X11Window::CommitIcon() {
    if (!std::exchange(iconWanted_, false) || !std::exchange(hasNewContentForIcon_, false))
        return;
    const Frame frame = owner_.CurrentFrame(0, owner_.FrameExtent().height);
    std::vector<std::uint32_t> icons;
    for (const int side : iconSides) {
        const auto icon = ScaledIcon(frame, side);
        icons.insert(icons.end(), icon.begin(), icon.end());
    }
    display_.SetWords(id_.value, display_.Atom(AtomName::NetWmIcon), XCB_ATOM_CARDINAL, icons);
}

} // namespace kqu::platform

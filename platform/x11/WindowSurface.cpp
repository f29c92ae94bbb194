#include "platform/x11/WindowSurface.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace kqu::platform {

namespace {
/// Keeps single requests below what every server takes, and far below what the socket holds.
constexpr std::size_t longestStrip = std::size_t{128} * 1024;
/// How many lines of the window are made into pixels at a time.
constexpr int linesAtATime = 32;

std::span<const std::uint32_t> LineOf(const Frame& frame, int line, int width) {
    return {frame.pixels + static_cast<std::ptrdiff_t>(line) * frame.stride,
            static_cast<std::size_t>(width)};
}
} // namespace

WindowSurface::WindowSurface(const Display& display, xcb_window_t window)
    : display_(display), window_(window), context_(xcb_generate_id(display.Connection())) {
    const std::uint32_t noExposures = 0;
    xcb_create_gc(display_.Connection(), context_, window_, XCB_GC_GRAPHICS_EXPOSURES,
                  &noExposures);
}

WindowSurface::~WindowSurface() {
    if (shown_ != 0)
        xcb_free_pixmap(display_.Connection(), shown_);
    xcb_free_gc(display_.Connection(), context_);
}

void WindowSurface::Rebuild(Size extent, NativeWindowOwner& owner) {
    extent_ = extent;
    MakePixmap();
    framed_ = Framed(owner);
    if (framed_ != extent) {
        const std::uint32_t colour = display_.Format().PixelOf(0xFFFFFF);
        const xcb_rectangle_t whole{0, 0, static_cast<std::uint16_t>(extent.width),
                                    static_cast<std::uint16_t>(extent.height)};
        xcb_change_gc(display_.Connection(), context_, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(display_.Connection(), pixmap_, context_, 1, &whole);
    }
    fingerprints_.assign(static_cast<std::size_t>(framed_.height), std::nullopt);
    static_cast<void>(TakeOver({0, framed_.height}, owner));
    MakeBackground();
}

Size WindowSurface::Framed(NativeWindowOwner& owner) const {
    const Size frame = owner.FrameExtent();
    return {std::clamp(frame.width, 0, extent_.width), std::clamp(frame.height, 0, extent_.height)};
}

void WindowSurface::Update(const Rect& area, NativeWindowOwner& owner) {
    if (framed_ != Framed(owner)) {
        Rebuild(extent_, owner);
        Repaint();
        return;
    }
    const Rect within = Intersection(area, {0, 0, framed_.width, framed_.height});
    const Lines changed = TakeOver({within.y, within.y + within.height}, owner);
    if (changed.first >= changed.last)
        return;
    MakeBackground();
    xcb_clear_area(display_.Connection(), 0, window_, 0, static_cast<std::int16_t>(changed.first),
                   static_cast<std::uint16_t>(framed_.width),
                   static_cast<std::uint16_t>(changed.last - changed.first));
}

WindowSurface::Lines WindowSurface::TakeOver(Lines lines, NativeWindowOwner& owner) {
    const std::size_t lineBytes =
        display_.Format().LineBytes(static_cast<std::size_t>(framed_.width));
    const int atOnce = std::clamp(
        static_cast<int>(longestStrip / std::max<std::size_t>(lineBytes, 1)), 1, linesAtATime);
    Lines changed{framed_.height, 0};
    for (int top = lines.first; top < lines.last; top += atOnce) {
        const Frame frame = owner.CurrentFrame(top, atOnce);
        const int end = std::min(top + atOnce, lines.last);
        Lines strip{end, top};
        for (int line = top; line < end; ++line)
            if (HasChanged(LineOf(frame, line - top, framed_.width), line))
                strip = {std::min(strip.first, line), line + 1};
        if (strip.first >= strip.last || lineBytes == 0)
            continue;
        strip_.resize(lineBytes * static_cast<std::size_t>(strip.last - strip.first));
        std::byte* bytes = strip_.data();
        for (int line = strip.first; line < strip.last; ++line, bytes += lineBytes)
            display_.Format().Convert(LineOf(frame, line - top, framed_.width), bytes);
        PutStrip(strip);
        changed = {std::min(changed.first, strip.first), strip.last};
    }
    return changed;
}

bool WindowSurface::HasChanged(std::span<const std::uint32_t> pixels, int line) {
    // The whole line, since that is what the fingerprint stands for: lines that differ have
    // different ones, but for one chance in 2^64.
    const std::size_t print = std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(pixels.data()), pixels.size_bytes()});
    return std::exchange(fingerprints_[static_cast<std::size_t>(line)], print) != print;
}

void WindowSurface::PutStrip(Lines lines) {
    DrawAside();
    xcb_put_image(display_.Connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, context_,
                  static_cast<std::uint16_t>(framed_.width),
                  static_cast<std::uint16_t>(lines.last - lines.first), 0,
                  static_cast<std::int16_t>(lines.first), 0, display_.Format().Depth(),
                  static_cast<std::uint32_t>(strip_.size()),
                  reinterpret_cast<const std::uint8_t*>(strip_.data()));
}

void WindowSurface::Repaint() const {
    xcb_clear_area(display_.Connection(), 0, window_, 0, 0, 0, 0);
}

/// What the window shows must not change line by line: an exposure in between would show a mixture.
void WindowSurface::DrawAside() {
    if (pixmap_ != shown_)
        return;
    MakePixmap();
    xcb_copy_area(display_.Connection(), shown_, pixmap_, context_, 0, 0, 0, 0,
                  static_cast<std::uint16_t>(extent_.width),
                  static_cast<std::uint16_t>(extent_.height));
}

void WindowSurface::MakePixmap() {
    pixmap_ = xcb_generate_id(display_.Connection());
    xcb_create_pixmap(display_.Connection(), display_.Format().Depth(), pixmap_, window_,
                      static_cast<std::uint16_t>(extent_.width),
                      static_cast<std::uint16_t>(extent_.height));
}

void WindowSurface::MakeBackground() {
    // What is drawn into a pixmap after it was made a background need not be seen.
    xcb_change_window_attributes(display_.Connection(), window_, XCB_CW_BACK_PIXMAP, &pixmap_);
    if (shown_ != 0)
        xcb_free_pixmap(display_.Connection(), shown_);
    shown_ = pixmap_;
}

} // namespace kqu::platform

#include "platform/x11/WindowSurface.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kqu::platform {

namespace {
/// Keeps single requests far below what the socket holds, whatever the server would take.
constexpr std::size_t longestStrip = std::size_t{128} * 1024;
constexpr std::size_t requestHeader = 32;
/// What every server takes.
constexpr std::size_t shortestLimit = 4096;
constexpr std::uint32_t colourBits = 0xFFFFFF;
constexpr std::uint32_t white = 0xFFFFFF;
/// How many lines of the window are made into pixels at a time.
constexpr int linesAtATime = 32;

std::span<const std::uint32_t> LineOf(const Frame& frame, int line, int width) {
    return {frame.pixels + static_cast<std::ptrdiff_t>(line) * frame.stride,
            static_cast<std::size_t>(width)};
}

/// 64 bits that differ for lines that differ, but for one chance in 2^64.
std::uint64_t Fingerprint(std::span<const std::uint32_t> line) {
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
    std::uint64_t mixed = line.size();
    const auto mix = [&](std::uint64_t value) {
        mixed = (mixed ^ value) * odd;
        mixed ^= mixed >> 29;
    };
    std::size_t index = 0;
    for (; index + 2 <= line.size(); index += 2)
        mix(std::uint64_t{line[index] & colourBits} << 32 | (line[index + 1] & colourBits));
    if (index < line.size())
        mix(line[index] & colourBits);
    return mixed;
}
} // namespace

WindowSurface::WindowSurface(const Display& display, xcb_window_t window)
    : display_(display), window_(window), context_(xcb_generate_id(display.Connection())) {
    const std::uint32_t noExposures = 0;
    xcb_create_gc(display_.Connection(), context_, window_, XCB_GC_GRAPHICS_EXPOSURES,
                  &noExposures);
}

WindowSurface::~WindowSurface() {
    for (const xcb_pixmap_t pixmap : {pixmap_, shown_})
        if (pixmap != 0)
            xcb_free_pixmap(display_.Connection(), pixmap);
    xcb_free_gc(display_.Connection(), context_);
}

void WindowSurface::Rebuild(Size extent, NativeWindowOwner& owner) {
    isShown_ = false;
    shown_ = std::exchange(pixmap_, xcb_generate_id(display_.Connection()));
    extent_ = extent;
    xcb_create_pixmap(display_.Connection(), display_.Format().depth, pixmap_, window_,
                      static_cast<std::uint16_t>(extent.width),
                      static_cast<std::uint16_t>(extent.height));
    framed_ = Framed(extent, owner);
    if (framed_ != extent)
        Fill(pixmap_, extent);
    fingerprints_.assign(static_cast<std::size_t>(framed_.height), std::nullopt);
    static_cast<void>(TakeOver({0, framed_.height}, owner));
    MakeBackground();
}

Size WindowSurface::Framed(Size extent, NativeWindowOwner& owner) const {
    const Size frame = owner.FrameExtent();
    return {std::clamp(frame.width, 0, extent.width), std::clamp(frame.height, 0, extent.height)};
}

void WindowSurface::Fill(xcb_pixmap_t pixmap, Size extent) const {
    const std::uint32_t colour = display_.Format().PixelOf(white);
    xcb_change_gc(display_.Connection(), context_, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t whole{0, 0, static_cast<std::uint16_t>(extent.width),
                                static_cast<std::uint16_t>(extent.height)};
    xcb_poly_fill_rectangle(display_.Connection(), pixmap, context_, 1, &whole);
}

void WindowSurface::Update(const Rect& area, NativeWindowOwner& owner) {
    if (framed_ != Framed(extent_, owner)) {
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
    Lines changed{framed_.height, 0};
    for (int top = lines.first; top < lines.last; top += linesAtATime) {
        const int end = std::min(top + linesAtATime, lines.last);
        const Part part{owner.CurrentFrame(top, linesAtATime), top};
        Lines run{top, top};
        for (int line = top; line < end; ++line) {
            if (!HasChanged(part, line)) {
                Put(part, run);
                run.first = line + 1;
            } else {
                changed = {std::min(changed.first, line), line + 1};
            }
            run.last = line + 1;
        }
        Put(part, run);
    }
    return changed;
}

bool WindowSurface::HasChanged(const Part& part, int line) {
    // The whole line, since that is what the fingerprint stands for.
    const std::uint64_t print = Fingerprint(LineOf(part.frame, line - part.top, framed_.width));
    return std::exchange(fingerprints_[static_cast<std::size_t>(line)], print) != print;
}

void WindowSurface::Repaint() const {
    xcb_clear_area(display_.Connection(), 0, window_, 0, 0, 0, 0);
}

void WindowSurface::Put(const Part& part, Lines lines) {
    if (framed_.width <= 0 || lines.first >= lines.last)
        return;
    DrawAside();
    const std::size_t lineBytes =
        display_.Format().LineBytes(static_cast<std::size_t>(framed_.width));
    const std::size_t room =
        std::clamp(display_.LongestRequest(), shortestLimit, longestStrip) - requestHeader;
    const int linesAtOnce = static_cast<int>(std::max<std::size_t>(room / lineBytes, 1));
    for (int line = lines.first; line < lines.last; line += linesAtOnce) {
        const Lines strip{line, std::min(line + linesAtOnce, lines.last)};
        const std::span<const std::byte> bytes = BytesOf(part, strip);
        xcb_put_image(display_.Connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, context_,
                      static_cast<std::uint16_t>(framed_.width),
                      static_cast<std::uint16_t>(strip.last - strip.first), 0,
                      static_cast<std::int16_t>(strip.first), 0, display_.Format().depth,
                      static_cast<std::uint32_t>(bytes.size()),
                      reinterpret_cast<const std::uint8_t*>(bytes.data()));
    }
}

std::span<const std::byte> WindowSurface::BytesOf(const Part& part, Lines lines) {
    const Frame& frame = part.frame;
    const auto count = static_cast<std::size_t>(lines.last - lines.first);
    if (display_.Format().IsNative() && frame.stride == framed_.width)
        return std::as_bytes(std::span(LineOf(frame, lines.first - part.top, framed_.width).data(),
                                       count * static_cast<std::size_t>(framed_.width)));
    const std::size_t lineBytes =
        display_.Format().LineBytes(static_cast<std::size_t>(framed_.width));
    converted_.resize(lineBytes * count);
    std::span<std::byte> left(converted_);
    for (int line = lines.first; line < lines.last; ++line) {
        display_.Format().Convert(LineOf(frame, line - part.top, framed_.width),
                                  left.first(lineBytes));
        left = left.subspan(lineBytes);
    }
    return converted_;
}

/// What the window shows must not change line by line: an exposure in between would show a mixture.
void WindowSurface::DrawAside() {
    if (!std::exchange(isShown_, false))
        return;
    shown_ = std::exchange(pixmap_, xcb_generate_id(display_.Connection()));
    const auto width = static_cast<std::uint16_t>(extent_.width);
    const auto height = static_cast<std::uint16_t>(extent_.height);
    xcb_create_pixmap(display_.Connection(), display_.Format().depth, pixmap_, window_, width,
                      height);
    xcb_copy_area(display_.Connection(), shown_, pixmap_, context_, 0, 0, 0, 0, width, height);
}

void WindowSurface::MakeBackground() {
    // What is drawn into a pixmap after it was made a background need not be seen.
    xcb_change_window_attributes(display_.Connection(), window_, XCB_CW_BACK_PIXMAP, &pixmap_);
    isShown_ = true;
    if (shown_ != 0)
        xcb_free_pixmap(display_.Connection(), std::exchange(shown_, 0));
}

} // namespace kqu::platform

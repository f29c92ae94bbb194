#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Display.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kqu::platform {

/// A window's finished pixels on the server's side: a pixmap that is the window's background. So
/// the server paints exposed, mapped and resized areas by itself, at once and complete, and nobody
/// ever sees a half-drawn frame or has to redraw one.
class WindowSurface {
  public:
    WindowSurface(const Display& display, xcb_window_t window);
    ~WindowSurface();
    WindowSurface(const WindowSurface&) = delete;
    WindowSurface& operator=(const WindowSurface&) = delete;

    [[nodiscard]] Size Extent() const { return extent_; }

    /// Makes a pixmap of that size the background, filled from the owner's frame; white where
    /// that does not reach. The window shows it when the server next paints it.
    void Rebuild(Size extent, NativeWindowOwner& owner);
    /// Takes the lines of the area over from the owner's frame, as far as they have changed, and
    /// shows them.
    void Update(const Rect& area, NativeWindowOwner& owner);
    /// Has the server paint the whole window.
    void Repaint() const;

  private:
    /// Lines of the frame, from the first up to and without the last.
    struct Lines {
        int first;
        int last;
    };

    [[nodiscard]] Size Framed(NativeWindowOwner& owner) const;
    /// Takes over what differs from the fingerprints; from the first to the last line that did.
    [[nodiscard]] Lines TakeOver(Lines lines, NativeWindowOwner& owner);
    [[nodiscard]] bool HasChanged(std::span<const std::uint32_t> pixels, int line);
    void PutStrip(Lines lines);
    void DrawAside();
    void MakePixmap();
    void MakeBackground();

    const Display& display_;
    xcb_window_t window_;
    xcb_gcontext_t context_;
    /// What is drawn on, and what the window shows.
    xcb_pixmap_t pixmap_ = 0;
    xcb_pixmap_t shown_ = 0;
    Size extent_;
    /// The part of the pixmap that shows the frame, and a fingerprint of each of its lines.
    Size framed_;
    std::vector<std::optional<std::size_t>> fingerprints_;
    /// Lines as the server wants them.
    std::vector<std::byte> strip_;
};

} // namespace kqu::platform

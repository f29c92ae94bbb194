#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <xcb/xcb.h>

namespace kqu::platform {

/// How the server wants the pixels of a window: the layout of a line in a Z-format image, and the
/// place of the colours in a pixel.
class PixelFormat {
  public:
    /// The format of a TrueColor visual of that depth on this connection.
    PixelFormat(const xcb_setup_t& setup, std::uint8_t depth, const xcb_visualtype_t& visual);

    [[nodiscard]] std::uint8_t Depth() const { return format_.depth; }
    [[nodiscard]] xcb_visualid_t Visual() const { return visual_.visual_id; }
    /// Whether pixels of 16, 24 or 32 bits can be made.
    [[nodiscard]] bool IsUsable() const;
    /// The bytes of a line, its padding included.
    [[nodiscard]] std::size_t LineBytes(std::size_t width) const;
    /// Writes a line of 0x00RRGGBB pixels; `line` has LineBytes of room.
    void Convert(std::span<const std::uint32_t> pixels, std::byte* line) const;
    /// One 0x00RRGGBB colour as a pixel value of the server.
    [[nodiscard]] std::uint32_t PixelOf(std::uint32_t colour) const;

  private:
    xcb_visualtype_t visual_;
    bool mostSignificantFirst_;
    xcb_format_t format_{};
};

} // namespace kqu::platform

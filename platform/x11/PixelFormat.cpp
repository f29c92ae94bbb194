#include "platform/x11/PixelFormat.h"

#include <bit>
#include <cstring>

namespace kqu::platform {

namespace {
/// A colour of 0 to 255 as the bits of a mask, rounded to the nearest of its steps.
std::uint32_t Scaled(std::uint32_t colour, std::uint32_t mask) {
    const std::uint64_t highest = mask >> std::countr_zero(mask);
    const auto step = static_cast<std::uint32_t>((colour * highest + 127) / 255);
    return step << std::countr_zero(mask);
}
} // namespace

PixelFormat::PixelFormat(const xcb_setup_t& setup, std::uint8_t visualDepth,
                         const xcb_visualtype_t& visual)
    : depth(visualDepth),
      mostSignificantFirst(setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST),
      redMask(visual.red_mask),
      greenMask(visual.green_mask),
      blueMask(visual.blue_mask) {
    for (auto format = xcb_setup_pixmap_formats_iterator(&setup); format.rem > 0;
         xcb_format_next(&format))
        if (format.data->depth == depth) {
            bitsPerPixel = format.data->bits_per_pixel;
            linePad = format.data->scanline_pad;
        }
}

bool PixelFormat::IsUsable() const {
    return (bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32) && linePad >= 8 &&
           redMask != 0 && greenMask != 0 && blueMask != 0;
}

std::size_t PixelFormat::LineBytes(std::size_t width) const {
    return (width * bitsPerPixel + linePad - 1) / linePad * linePad / 8;
}

std::uint32_t PixelFormat::PixelOf(std::uint32_t colour) const {
    return Scaled((colour >> 16) & 0xFF, redMask) | Scaled((colour >> 8) & 0xFF, greenMask) |
           Scaled(colour & 0xFF, blueMask);
}

void PixelFormat::Convert(std::span<const std::uint32_t> pixels, std::byte* line) const {
    const bool isNative = bitsPerPixel == 32 && redMask == 0xFF0000 && greenMask == 0x00FF00 &&
                          blueMask == 0x0000FF &&
                          mostSignificantFirst == (std::endian::native == std::endian::big);
    if (isNative) {
        std::memcpy(line, pixels.data(), pixels.size_bytes());
        return;
    }
    const std::size_t bytes = bitsPerPixel / 8;
    for (const std::uint32_t colour : pixels) {
        const std::uint32_t pixel = PixelOf(colour);
        for (std::size_t index = 0; index < bytes; ++index) {
            const std::size_t place = mostSignificantFirst ? bytes - 1 - index : index;
            *line++ = static_cast<std::byte>(pixel >> (8 * place));
        }
    }
}

} // namespace kqu::platform

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

PixelFormat::PixelFormat(const xcb_setup_t& setup, std::uint8_t depth,
                         const xcb_visualtype_t& visual)
    : visual_(visual), mostSignificantFirst_(setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST) {
    for (auto format = xcb_setup_pixmap_formats_iterator(&setup); format.rem > 0;
         xcb_format_next(&format))
        if (format.data->depth == depth)
            format_ = *format.data;
}

bool PixelFormat::IsUsable() const {
    const auto bits = format_.bits_per_pixel;
    return (bits == 16 || bits == 24 || bits == 32) && format_.scanline_pad >= 8 &&
           visual_.red_mask != 0 && visual_.green_mask != 0 && visual_.blue_mask != 0;
}

std::size_t PixelFormat::LineBytes(std::size_t width) const {
    const std::size_t pad = format_.scanline_pad;
    return (width * format_.bits_per_pixel + pad - 1) / pad * pad / 8;
}

std::uint32_t PixelFormat::PixelOf(std::uint32_t colour) const {
    return Scaled((colour >> 16) & 0xFF, visual_.red_mask) |
           Scaled((colour >> 8) & 0xFF, visual_.green_mask) |
           Scaled(colour & 0xFF, visual_.blue_mask);
}

void PixelFormat::Convert(std::span<const std::uint32_t> pixels, std::byte* line) const {
    const bool isNative = format_.bits_per_pixel == 32 && visual_.red_mask == 0xFF0000 &&
                          visual_.green_mask == 0x00FF00 && visual_.blue_mask == 0x0000FF &&
                          mostSignificantFirst_ == (std::endian::native == std::endian::big);
    if (isNative) {
        std::memcpy(line, pixels.data(), pixels.size_bytes());
        return;
    }
    const std::size_t bytes = format_.bits_per_pixel / 8;
    for (const std::uint32_t colour : pixels) {
        const std::uint32_t pixel = PixelOf(colour);
        for (std::size_t index = 0; index < bytes; ++index) {
            const std::size_t place = mostSignificantFirst_ ? bytes - 1 - index : index;
            *line++ = static_cast<std::byte>(pixel >> (8 * place));
        }
    }
}

} // namespace kqu::platform

#include "platform/x11/IconScaling.h"

#include "platform/CDeleter.h"

#include <algorithm>
#include <cairo.h>
#include <cstddef>

namespace kqu::platform {

namespace {
using Surface = CPointer<cairo_surface_t, cairo_surface_destroy>;

Surface SurfaceOf(std::uint32_t* pixels, cairo_format_t format, int width, int height, int stride) {
    return Surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels),
                                                       format, width, height, 4 * stride));
}
} // namespace

std::vector<std::uint32_t> ScaledIcon(const Frame& frame, int side) {
    const auto length = static_cast<std::size_t>(side);
    std::vector<std::uint32_t> icon(2 + length * length);
    icon[0] = icon[1] = static_cast<std::uint32_t>(side);
    if (frame.width <= 0 || frame.height <= 0)
        return icon;
    const int longest = std::max({frame.width, frame.height, side});
    const Size size{std::max(1, frame.width * side / longest),
                    std::max(1, frame.height * side / longest)};
    // Cairo takes no constant pixels; as a source it only reads them.
    const Surface source = SurfaceOf(const_cast<std::uint32_t*>(frame.pixels), CAIRO_FORMAT_RGB24,
                                     frame.width, frame.height, frame.stride);
    const Surface target = SurfaceOf(icon.data() + 2, CAIRO_FORMAT_ARGB32, side, side, side);
    const CPointer<cairo_t, cairo_destroy> cairo(cairo_create(target.get()));
    // Whole pixels: an icon between two of them is blurred.
    const int left = (side - size.width) / 2;
    const int top = (side - size.height) / 2;
    cairo_translate(cairo.get(), left, top);
    cairo_rectangle(cairo.get(), 0, 0, size.width, size.height);
    cairo_scale(cairo.get(), static_cast<double>(size.width) / frame.width,
                static_cast<double>(size.height) / frame.height);
    cairo_set_source_surface(cairo.get(), source.get(), 0, 0);
    // The frame's edges stay opaque.
    cairo_pattern_set_extend(cairo_get_source(cairo.get()), CAIRO_EXTEND_PAD);
    cairo_fill(cairo.get());
    cairo_surface_flush(target.get());
    return icon;
}

} // namespace kqu::platform

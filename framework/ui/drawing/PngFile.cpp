#include "framework/ui/drawing/PngFile.h"

#include "platform/CDeleter.h"

#include <algorithm>
#include <cairo.h>
#include <cstring>

namespace kqu::drawing {

namespace {
using Surface = platform::CPointer<cairo_surface_t, cairo_surface_destroy>;
using Cairo = platform::CPointer<cairo_t, cairo_destroy>;

cairo_status_t ReadSome(void* closure, unsigned char* data, unsigned int length) {
    auto& rest = *static_cast<std::span<const std::byte>*>(closure);
    if (length > rest.size())
        return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, rest.data(), length);
    rest = rest.subspan(length);
    return CAIRO_STATUS_SUCCESS;
}

Surface OnWhite(cairo_surface_t* image) {
    Surface opaque(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                              cairo_image_surface_get_width(image),
                                              cairo_image_surface_get_height(image)));
    const Cairo cairo(cairo_create(opaque.get()));
    cairo_set_source_rgb(cairo.get(), 1, 1, 1);
    cairo_paint(cairo.get());
    cairo_set_source_surface(cairo.get(), image, 0, 0);
    cairo_paint(cairo.get());
    cairo_surface_flush(opaque.get());
    return opaque;
}
} // namespace

std::optional<Raster> ReadPng(std::span<const std::byte> file) {
    const Surface image(cairo_image_surface_create_from_png_stream(ReadSome, &file));
    if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS)
        return {};
    const Surface opaque = OnWhite(image.get());
    const unsigned char* data = cairo_image_surface_get_data(opaque.get());
    if (data == nullptr)
        return {};
    const std::ptrdiff_t stride = cairo_image_surface_get_stride(opaque.get());
    Raster pixels(Area::Of(0, 0, cairo_image_surface_get_width(opaque.get()),
                           cairo_image_surface_get_height(opaque.get())));
    for (Pixels y = 0; y < pixels.Bounds().bottom; ++y) {
        const auto* line = reinterpret_cast<const Pixel*>(data + y * stride);
        std::transform(line, line + pixels.Bounds().Width(), pixels.At(0, y),
                       [](Pixel pixel) { return pixel & 0xFFFFFFU; });
    }
    return pixels;
}

} // namespace kqu::drawing

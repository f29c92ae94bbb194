#include "tests/support/Artwork.h"

#include "framework/files/ResourceFork.h"
#include "panel/Pictures.h"
#include "platform/CDeleter.h"

#include <cairo.h>

namespace kqu::simulation {

namespace {
cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
    const auto* bytes = reinterpret_cast<const std::byte*>(data);
    auto& file = *static_cast<std::vector<std::byte>*>(closure);
    file.insert(file.end(), bytes, bytes + length);
    return CAIRO_STATUS_SUCCESS;
}
} // namespace

std::vector<std::byte> Png(int width, int height, const PixelOf& pixel) {
    const platform::CPointer<cairo_surface_t, cairo_surface_destroy> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    unsigned char* data = cairo_image_surface_get_data(image.get());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<std::uint32_t*>(
                data + y * cairo_image_surface_get_stride(image.get()))[x] = pixel(x, y).value;
    cairo_surface_mark_dirty(image.get());
    std::vector<std::byte> file;
    cairo_surface_write_to_png_stream(image.get(), Append, &file);
    return file;
}

Artwork::Artwork() {
    DropPictures();
}

Artwork::~Artwork() {
    appResourceForkGetter()->Restore();
    DropPictures();
}

void Artwork::Set(int id, int width, int height, const PixelOf& pixel) {
    appResourceForkGetter()->Set(id, Png(width, height, pixel));
}

void Artwork::Remove(int id) {
    appResourceForkGetter()->Remove(id);
}

} // namespace kqu::simulation

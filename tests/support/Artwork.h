#pragma once

#include "framework/ui/Colour.h"
#include "framework/ui/Picture.h"
#include "framework/ui/ResourceFork.h"
#include "panel/Pictures.h"
#include "platform/CDeleter.h"

#include <cairo.h>
#include <functional>
#include <vector>

namespace kqu::simulation {

using PixelOf = std::function<Colour(int x, int y)>;

/// A PNG file with these pixels.
[[nodiscard]] inline std::vector<std::byte> Png(int width, int height, const PixelOf& pixel) {
    const platform::CPointer<cairo_surface_t, cairo_surface_destroy> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    unsigned char* data = cairo_image_surface_get_data(image.get());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<std::uint32_t*>(
                data + y * cairo_image_surface_get_stride(image.get()))[x] = pixel(x, y).value;
    cairo_surface_mark_dirty(image.get());
    const auto append = [](void* closure, const unsigned char* bytes, unsigned int length) {
        const auto* first = reinterpret_cast<const std::byte*>(bytes);
        auto& file = *static_cast<std::vector<std::byte>*>(closure);
        file.insert(file.end(), first, first + length);
        return CAIRO_STATUS_SUCCESS;
    };
    std::vector<std::byte> file;
    cairo_surface_write_to_png_stream(image.get(), append, &file);
    return file;
}

[[nodiscard]] inline Colour Grey(int value) {
    return RGB(value, value, value);
}

/// Artwork for one test in place of the program's own, which is back afterwards. Pictures are
/// loaded anew on both sides.
class Artwork {
  public:
    Artwork() { DropPictures(); }
    ~Artwork() {
        appResourceForkGetter()->Restore();
        DropPictures();
    }
    Artwork(const Artwork&) = delete;
    Artwork& operator=(const Artwork&) = delete;

    void Set(int id, int width, int height, const PixelOf& pixel) {
        appResourceForkGetter()->Set(id, Png(width, height, pixel));
    }
    void Remove(int id) { appResourceForkGetter()->Remove(id); }
};

} // namespace kqu::simulation

#include "framework/ui/Picture.h"

#include "framework/ui/drawing/Plane.h"
#include "framework/values/Exceptions.h"
#include "platform/CDeleter.h"

#include <algorithm>
#include <cairo.h>
#include <cstring>
#include <optional>
#include <utility>

namespace kqu {

using drawing::Area;
using drawing::Plane;
using drawing::Raster;

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

/// The pixels of a PNG file, what is transparent laid on white; nothing if the file is broken.
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
    for (drawing::Pixels y = 0; y < pixels.Bounds().bottom; ++y) {
        const auto* line = reinterpret_cast<const drawing::Pixel*>(data + y * stride);
        std::transform(line, line + pixels.Bounds().Width(), pixels.At(0, y),
                       [](drawing::Pixel pixel) { return pixel & 0xFFFFFFU; });
    }
    return pixels;
}
} // namespace

Ref<Picture> Picture::MakeBuffer(int width, int height) {
    const int scale = platform::DeviceScale();
    return std::make_shared<Picture>(
        std::make_shared<Plane>(
            Raster(Area::Of(0, 0, std::max(width, 0), std::max(height, 0)).Times(scale))),
        scale);
}

Ref<Picture> Picture::FromPng(std::span<const std::byte> file, int scale) {
    auto pixels = ReadPng(file);
    return pixels ? std::make_shared<Picture>(std::make_shared<Plane>(std::move(*pixels)), scale)
                  : nullptr;
}

Ref<Picture> Picture::MakeRecorded(int width, int height) {
    const int scale = platform::DeviceScale();
    return std::make_shared<Picture>(
        std::make_shared<Plane>(std::max(width, 0) * scale, std::max(height, 0) * scale), scale);
}

Picture::Picture(std::shared_ptr<Plane> plane, int scale)
    : plane_(std::move(plane)), scale_(scale), graphics_(*this) {}

Picture::~Picture() = default;

int Picture::Width() const {
    return plane_->Width() / scale_;
}

int Picture::Height() const {
    return plane_->Height() / scale_;
}

Ref<Picture> Picture::Mask(MaskCreation creation) {
    if (!mask_ && creation == MaskCreation::MakeIfMissing)
        mask_ = std::make_shared<Picture>(
            std::make_shared<Plane>(plane_->Width(), plane_->Height()), scale_);
    return mask_;
}

drawing::Image Picture::Snapshot() const {
    return {plane_, mask_ ? mask_->plane_ : nullptr};
}

void Picture::Draw(drawing::Command command, const Area& clip) {
    // A plane with a second owner is a snapshot and stays as it is.
    if (plane_.use_count() > 1) {
        if (plane_->IsHiddenBy(command, clip))
            plane_ = std::make_shared<Plane>(plane_->Width(), plane_->Height());
        else
            plane_ = std::make_shared<Plane>(*plane_);
    }
    plane_->Draw(std::move(command), clip);
}

Ref<Picture> NewPicture(int width, int height, int /*depth*/) {
    if (width < 1 || height < 1)
        throw RuntimeException("a picture must be at least one pixel wide and high");
    return Picture::MakeRecorded(width, height);
}

} // namespace kqu

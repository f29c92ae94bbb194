#include "framework/ui/Picture.h"

#include "framework/ui/drawing/Plane.h"
#include "framework/ui/drawing/PngFile.h"
#include "framework/values/Exceptions.h"
#include "platform/interfaces/DeviceScale.h"

#include <algorithm>
#include <utility>

namespace kqu {

using drawing::Area;
using drawing::Plane;
using drawing::Raster;

Ref<Picture> Picture::MakeBuffer(int width, int height) {
    const int scale = platform::DeviceScale();
    return std::make_shared<Picture>(
        std::make_shared<Plane>(
            Raster(Area::Of(0, 0, std::max(width, 0), std::max(height, 0)).Times(scale))),
        scale);
}

Ref<Picture> Picture::FromPng(std::span<const std::byte> file, int scale) {
    auto pixels = drawing::ReadPng(file);
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

#pragma once

#include "framework/ui/Graphics.h"
#include "framework/values/Object.h"
#include "platform/interfaces/NativeWindow.h"

#include <cstddef>
#include <memory>
#include <span>

namespace kqu {

namespace drawing {
struct Area;
struct Command;
struct Image;
class Plane;
} // namespace drawing

enum class MaskCreation { IfThere, MakeIfMissing };

/// An off-screen picture: a plane of colours and, on demand, a mask of the same size, which is a
/// picture too. A mask's grey says how far a pixel shows: black shows it, white hides it. Fresh
/// pictures are white and fresh masks hide everything. Drawing on a picture never touches its mask.
///
/// When pixels come into being is the picture's own business: it remembers what was drawn on it
/// and makes pixels of what is looked at. A picture may be far larger than would fit in memory.
class Picture : public Object {
  public:
    /// A picture that has its pixels from the start. It pays where many of them are read.
    [[nodiscard]] static Ref<Picture> MakeBuffer(int width, int height);
    /// A picture from a PNG file's bytes; nil if they are broken. What is transparent becomes
    /// white. `scale` says how many of its pixels make a logical one.
    [[nodiscard]] static Ref<Picture> FromPng(std::span<const std::byte> file, int scale = 1);
    /// A white picture that remembers what is drawn on it.
    [[nodiscard]] static Ref<Picture> MakeRecorded(int width, int height);

    /// A plane of device pixels, `scale` of them to each logical one.
    Picture(std::shared_ptr<drawing::Plane> plane, int scale);
    ~Picture() override;

    /// Logical pixels.
    [[nodiscard]] int Width() const;
    [[nodiscard]] int Height() const;

    [[nodiscard]] kqu::Graphics& Graphics() { return graphics_; }

    /// The mask: nil if there is none and none was asked to be made.
    [[nodiscard]] Ref<Picture> Mask(MaskCreation creation);

    /// Device pixels to one logical pixel: the device's scale when the picture was made, or that of
    /// its file.
    [[nodiscard]] int Scale() const { return scale_; }

    // For Graphics.
    /// What the picture shows now, untouched by later drawing.
    [[nodiscard]] drawing::Image Snapshot() const;
    [[nodiscard]] const drawing::Plane& Colours() const { return *plane_; }
    void Draw(drawing::Command command, const drawing::Area& clip);

  private:
    std::shared_ptr<drawing::Plane> plane_;
    int scale_;
    Ref<Picture> mask_;
    kqu::Graphics graphics_;
};

/// Bits per pixel of every picture.
inline constexpr int pictureDepth = 32;

/// A new white picture without a mask. The depth, bits per pixel, is always 32.
/// Raises a RuntimeException when the width or the height is below 1.
[[nodiscard]] Ref<Picture> NewPicture(int width, int height, int depth);

} // namespace kqu

#pragma once

#include "framework/ui/drawing/Raster.h"

#include <memory>
#include <string>
#include <variant>

namespace kqu::drawing {

class Plane;

/// What a picture showed at one moment, untouched by whatever is drawn on the picture later.
struct Image {
    std::shared_ptr<const Plane> colours;
    /// Nil if everything shows.
    std::shared_ptr<const Plane> mask;

    bool operator==(const Image& other) const;
};

struct FillCommand {
    Area area;
    Pixel colour;

    bool operator==(const FillCommand&) const = default;
};

struct ImageCommand {
    Image image;
    Area destination;
    /// Within the image; scaled if its size is not the destination's.
    Area source;

    bool operator==(const ImageCommand&) const = default;
};

struct TextCommand {
    std::string text;
    Pixels x;
    Pixels baseline;
    int size;
    Pixel colour;

    bool operator==(const TextCommand&) const = default;
};

/// One thing to draw.
struct Command {
    std::variant<FillCommand, ImageCommand, TextCommand> what;

    /// All pixels that it may change.
    [[nodiscard]] Area Reach() const;
    /// Whether it leaves nothing to be seen of what was in its reach.
    [[nodiscard]] bool IsOpaque() const;
    /// Draws what lies within the target.
    void Paint(const Target& target) const;

    bool operator==(const Command&) const = default;
};

/// A part of an image to be drawn at a place. What lies outside the image is cut off, and its share
/// of the destination with it.
[[nodiscard]] Command DrawImage(Image image, const Area& destination, const Area& source);

} // namespace kqu::drawing

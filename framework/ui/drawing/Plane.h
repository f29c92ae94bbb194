#pragma once

#include "framework/ui/drawing/Command.h"
#include "framework/ui/drawing/Raster.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace kqu::drawing {

/// One plane of a picture, its colours or its mask, white to begin with.
///
/// What is drawn on it is recorded, and made into pixels only where they are needed: a list of a
/// thousand rows costs what it shows. A small plane that is looked at again and again gets pixels
/// for good and is drawn on directly from then on.
///
/// A plane that is shared is never drawn on: it is the snapshot of its picture.
class Plane {
  public:
    Plane(int width, int height);
    /// A plane that has its pixels from the start; they begin at (0, 0).
    explicit Plane(Raster pixels);
    Plane(const Plane& other);
    Plane& operator=(const Plane&) = delete;

    [[nodiscard]] int Width() const { return width_; }
    [[nodiscard]] int Height() const { return height_; }
    [[nodiscard]] Area Bounds() const { return Area::Of(0, 0, width_, height_); }

    /// True if both show the same because the same was drawn on them. False says nothing.
    bool operator==(const Plane& other) const;

    /// Draws within `clip`.
    void Draw(Command command, const Area& clip);
    /// Whether nothing would be left of the plane as it is.
    [[nodiscard]] bool IsHiddenBy(const Command& command, const Area& clip) const;

    /// The pixel at a place within the bounds.
    [[nodiscard]] Pixel At(Pixels x, Pixels y) const;
    /// Copies what the target wants; the target's clip lies within the bounds.
    void PaintOn(const Target& target) const;
    /// Pixels that hold at least `area`, which is within the bounds.
    [[nodiscard]] std::shared_ptr<const Raster> PixelsOf(const Area& area) const;

  private:
    struct Entry {
        Command command;
        /// Clipped to where it may draw.
        Area reach;

        bool operator==(const Entry&) const = default;
    };

    void Record(Command command, const Area& reach);
    void Hide(const Area& filled);
    void DropBelow(const Area& covered);
    void Rasterise() const;
    [[nodiscard]] Pixels Size() const { return Pixels{width_} * height_; }

    int width_;
    int height_;
    // Rasterising changes how the plane is kept, not what it shows.
    mutable std::shared_ptr<Raster> pixels_;
    mutable std::vector<Entry> entries_;
    /// What no entry has painted is white; this much of it is not covered by fills.
    mutable Area blank_;
    /// The latest fill among the entries.
    std::optional<std::size_t> latestFill_;
    /// How often pixels were asked for.
    mutable int looks_ = 0;
};

} // namespace kqu::drawing

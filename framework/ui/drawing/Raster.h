#pragma once

#include "framework/ui/drawing/Area.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kqu::drawing {

/// A pixel, 0x00RRGGBB.
using Pixel = std::uint32_t;
inline constexpr Pixel white = 0xFFFFFF;

/// The pixels of an area, line by line. Places are those of the plane that the area belongs to, and
/// must lie within the area.
class Raster {
  public:
    /// White. The area must be small enough for memory.
    explicit Raster(const Area& area)
        : area_(area),
          pixels_(area.IsEmpty() ? 0U
                                 : static_cast<std::size_t>(area.Width()) *
                                       static_cast<std::size_t>(area.Height()),
                  white) {}

    [[nodiscard]] const Area& Bounds() const { return area_; }
    [[nodiscard]] Pixel* At(Pixels x, Pixels y) { return pixels_.data() + Offset(x, y); }
    [[nodiscard]] const Pixel* At(Pixels x, Pixels y) const {
        return pixels_.data() + Offset(x, y);
    }

    /// Gives the same pixels another place.
    void MoveTo(Pixels left, Pixels top) {
        area_ = Area::Of(left, top, area_.Width(), area_.Height());
    }

  private:
    [[nodiscard]] std::ptrdiff_t Offset(Pixels x, Pixels y) const {
        return (y - area_.top) * area_.Width() + (x - area_.left);
    }

    Area area_;
    std::vector<Pixel> pixels_;
};

/// A part of a raster that is drawn on, in the coordinates of whatever is drawn: the raster's are
/// those plus the shift.
struct Target {
    Raster& raster;
    Area clip;
    Pixels shiftX = 0;
    Pixels shiftY = 0;

    [[nodiscard]] Pixel* At(Pixels x, Pixels y) const { return raster.At(x + shiftX, y + shiftY); }
    /// The same place, seen from something that lies at (x, y) and reaches over `part`.
    [[nodiscard]] Target Of(Pixels x, Pixels y, const Area& part) const {
        return {raster, clip.Within(part).Moved(-x, -y), shiftX + x, shiftY + y};
    }
};

} // namespace kqu::drawing

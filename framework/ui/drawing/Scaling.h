#pragma once

#include "framework/ui/drawing/Raster.h"

#include <cstdint>
#include <vector>

namespace kqu::drawing {

class Plane;

/// Makes lines of pixels wider or narrower. Each pixel of the destination is the average of exactly
/// that stretch of the source which it covers. So what is uniform stays uniform, nothing fades at
/// the ends, and nothing from outside the source bleeds in. Lengths are at least 1.
class LineScaling {
  public:
    struct Stretch {
        Pixels start;
        Pixels length;
    };
    LineScaling(Stretch source, Stretch destination) : source_(source), destination_(destination) {}

    /// The lines of a plane, scaled. `wanted` has columns of the destination and lines of the
    /// plane.
    [[nodiscard]] Raster Apply(const Plane& plane, const Area& wanted) const;

    /// The source pixels that go into destination pixels from `first` up to `end`.
    [[nodiscard]] Stretch SourceOf(Pixels first, Pixels end) const;

    /// What each source pixel of one destination pixel weighs, appended in order. The sum is always
    /// `fullWeight`.
    void AppendWeights(Pixels destination, std::vector<std::uint32_t>& weights) const;
    static constexpr std::uint32_t fullWeight = 4096;

  private:
    Stretch source_;
    Stretch destination_;
};

} // namespace kqu::drawing

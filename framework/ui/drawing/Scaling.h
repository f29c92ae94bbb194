#pragma once

#include "framework/ui/drawing/Raster.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kqu::drawing {

/// One direction of a scaling: each pixel of the destination is the average of exactly that stretch
/// of the source which it covers. So what is uniform stays uniform, nothing fades at the ends, and
/// nothing from outside the source bleeds in. Lengths are at least 1.
class ScaledAxis {
  public:
    struct Stretch {
        Pixels start;
        Pixels length;
    };
    ScaledAxis(Stretch source, Stretch destination) : source_(source), destination_(destination) {}

    /// The source pixels that go into destination pixels from `first` up to `end`.
    [[nodiscard]] Stretch SourceOf(Pixels first, Pixels end) const;

    /// What each source pixel of one destination pixel weighs, appended in order. The sum is always
    /// `fullWeight`.
    void AppendWeights(Pixels destination, std::vector<std::uint32_t>& weights) const;
    static constexpr std::uint32_t fullWeight = 4096;

    [[nodiscard]] bool IsIdentity() const { return source_.length == destination_.length; }

  private:
    Stretch source_;
    Stretch destination_;
};

/// The part `wanted` of a scaled picture, in destination coordinates. `source` must hold all source
/// pixels that go into it.
[[nodiscard]] Raster Scaled(const Raster& source, const ScaledAxis& across, const ScaledAxis& down,
                            const Area& wanted);

} // namespace kqu::drawing

#include "framework/ui/drawing/Scaling.h"

#include <algorithm>

namespace kqu::drawing {

namespace {
/// The channels of a pixel side by side with room for the sum of all weights: 20 bits each.
using Channels = std::uint64_t;

constexpr unsigned weightBits = 12;
static_assert(1U << weightBits == ScaledAxis::fullWeight);
constexpr Channels half = ScaledAxis::fullWeight / 2;
constexpr Channels rounding = half << 40U | half << 20U | half;

Channels Spread(Pixel pixel) {
    const Channels wide = pixel;
    return (wide & 0xFF0000U) << 24U | (wide & 0xFF00U) << 12U | (wide & 0xFFU);
}

Pixel Gathered(Channels weighted) {
    const Channels sum = (weighted + rounding) >> weightBits;
    return static_cast<Pixel>((sum >> 24U & 0xFF0000U) | (sum >> 12U & 0xFF00U) | (sum & 0xFFU));
}

/// The weights of a row of destination pixels, computed once for all lines.
class Weights {
  public:
    Weights(const ScaledAxis& axis, Pixels first, Pixels end) {
        for (Pixels pixel = first; pixel < end; ++pixel) {
            const std::size_t known = weights_.size();
            axis.AppendWeights(pixel, weights_);
            spans_.push_back({axis.SourceOf(pixel, pixel + 1).start, known, weights_.size()});
        }
    }

    /// Calls take(index, sum of weighted source(place)) for each destination pixel.
    template <class Source, class Take>
    void Apply(Source source, Take take) const {
        for (std::size_t i = 0; i < spans_.size(); ++i) {
            Channels sum = 0;
            Pixels place = spans_[i].source;
            for (std::size_t w = spans_[i].firstWeight; w < spans_[i].endWeight; ++w)
                sum += Spread(source(place++)) * weights_[w];
            take(i, sum);
        }
    }

  private:
    struct Span {
        Pixels source;
        std::size_t firstWeight;
        std::size_t endWeight;
    };

    std::vector<Span> spans_;
    std::vector<std::uint32_t> weights_;
};

/// Scaled in the direction of the lines only.
Raster ScaledAcross(const Raster& source, const ScaledAxis& across, const Area& result) {
    Raster lines(result);
    const Weights weights(across, result.left, result.right);
    for (Pixels y = result.top; y < result.bottom; ++y) {
        Pixel* scaled = lines.At(result.left, y);
        const Pixels left = source.Bounds().left;
        const Pixel* line = source.At(left, y);
        weights.Apply([&](Pixels x) { return line[x - left]; },
                      [&](std::size_t i, Channels sum) { scaled[i] = Gathered(sum); });
    }
    return lines;
}
} // namespace

ScaledAxis::Stretch ScaledAxis::SourceOf(Pixels first, Pixels end) const {
    const Pixels start = (first - destination_.start) * source_.length / destination_.length;
    const Pixels covered = (end - destination_.start) * source_.length;
    const Pixels stop = (covered + destination_.length - 1) / destination_.length;
    return {source_.start + start, stop - start};
}

void ScaledAxis::AppendWeights(Pixels destination, std::vector<std::uint32_t>& weights) const {
    const Pixels start = (destination - destination_.start) * source_.length;
    const Pixels end = start + source_.length;
    Pixels edge = start / destination_.length * destination_.length;
    std::uint32_t given = 0;
    while (edge < end) {
        edge += destination_.length;
        const Pixels covered = std::min(edge, end) - start;
        const auto sum = static_cast<std::uint32_t>((covered * fullWeight + source_.length / 2) /
                                                    source_.length);
        weights.push_back(sum - given);
        given = sum;
    }
}

Raster Scaled(const Raster& source, const ScaledAxis& across, const ScaledAxis& down,
              const Area& wanted) {
    const ScaledAxis::Stretch needed = down.SourceOf(wanted.top, wanted.bottom);
    Raster lines = ScaledAcross(
        source, across, {wanted.left, needed.start, wanted.right, needed.start + needed.length});
    if (down.IsIdentity()) {
        // The same lines under other numbers.
        lines.MoveTo(wanted.left, wanted.top);
        return lines;
    }
    Raster result(wanted);
    const Weights weights(down, wanted.top, wanted.bottom);
    for (Pixels x = wanted.left; x < wanted.right; ++x)
        weights.Apply([&](Pixels y) { return *lines.At(x, y); },
                      [&](std::size_t i, Channels sum) {
                          *result.At(x, wanted.top + static_cast<Pixels>(i)) = Gathered(sum);
                      });
    return result;
}

} // namespace kqu::drawing

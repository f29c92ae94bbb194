#include "framework/ui/drawing/Scaling.h"

#include <algorithm>
#include <numeric>

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

/// The sums that make one line of destination pixels from one of the source, laid out once for all
/// lines. Source pixels that are alike in every line need no sum.
class Sums {
  public:
    /// `sameAs` gives for each source pixel the first of those up to it that are alike.
    Sums(const ScaledAxis& axis, Pixels first, Pixels end, Pixels sourceFirst,
         const std::vector<Pixels>& sameAs) {
        for (Pixels pixel = first; pixel < end; ++pixel) {
            const auto [start, length] = axis.SourceOf(pixel, pixel + 1);
            const std::size_t known = weights_.size();
            const auto last = static_cast<std::size_t>(start + length - 1 - sourceFirst);
            if (sameAs[last] > start)
                axis.AppendWeights(pixel, weights_);
            spans_.push_back({start - sourceFirst, known, weights_.size()});
        }
    }

    /// The source's pixels are `step` apart, as are the destination's.
    void Apply(const Pixel* source, Pixels sourceStep, Pixel* destination, Pixels step) const {
        for (const Span& span : spans_) {
            const Pixel* from = source + span.source * sourceStep;
            if (span.firstWeight == span.endWeight) {
                *destination = *from;
            } else {
                Channels sum = 0;
                for (std::size_t w = span.firstWeight; w < span.endWeight; ++w, from += sourceStep)
                    sum += Spread(*from) * weights_[w];
                *destination = Gathered(sum);
            }
            destination += step;
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

/// For each column of an area the first of those up to it that are alike in every line.
std::vector<Pixels> LikeColumns(const Raster& source, const Area& area) {
    const auto width = static_cast<std::size_t>(area.Width());
    std::vector<Pixel> differences(width);
    for (Pixels y = area.top; y < area.bottom; ++y) {
        const Pixel* line = source.At(area.left, y);
        for (std::size_t x = 1; x < width; ++x)
            differences[x] |= line[x] ^ line[x - 1];
    }
    std::vector<Pixels> sameAs(width, area.left);
    for (std::size_t x = 1; x < width; ++x)
        sameAs[x] = differences[x] == 0 ? sameAs[x - 1] : area.left + static_cast<Pixels>(x);
    return sameAs;
}

/// As above, for lines that are all taken to be different.
std::vector<Pixels> DifferentLines(const Area& area) {
    std::vector<Pixels> sameAs(static_cast<std::size_t>(area.Height()));
    std::iota(sameAs.begin(), sameAs.end(), area.top);
    return sameAs;
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
    const auto columns = across.SourceOf(wanted.left, wanted.right);
    const auto lines = down.SourceOf(wanted.top, wanted.bottom);
    const Area needed = Area::Of(columns.start, lines.start, columns.length, lines.length);
    const Sums sumsAcross(across, wanted.left, wanted.right, needed.left,
                          LikeColumns(source, needed));
    Raster scaled({wanted.left, needed.top, wanted.right, needed.bottom});
    for (Pixels y = needed.top; y < needed.bottom; ++y)
        sumsAcross.Apply(source.At(needed.left, y), 1, scaled.At(wanted.left, y), 1);
    if (down.IsIdentity()) {
        // The same lines under other numbers.
        scaled.MoveTo(wanted.left, wanted.top);
        return scaled;
    }
    Raster result(wanted);
    const Sums sumsDown(down, wanted.top, wanted.bottom, needed.top, DifferentLines(needed));
    for (Pixels x = wanted.left; x < wanted.right; ++x)
        sumsDown.Apply(scaled.At(x, needed.top), wanted.Width(), result.At(x, wanted.top),
                       wanted.Width());
    return result;
}

} // namespace kqu::drawing

#include "framework/ui/drawing/Scaling.h"

#include "framework/ui/drawing/Plane.h"

#include <algorithm>

namespace kqu::drawing {

namespace {
/// The channels of a pixel side by side with room for the sum of all weights: 20 bits each.
using Channels = std::uint64_t;

constexpr unsigned weightBits = 12;
static_assert(1U << weightBits == LineScaling::fullWeight);
constexpr Channels half = LineScaling::fullWeight / 2;
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
    Sums(const LineScaling& axis, Pixels first, Pixels end, Pixels sourceFirst,
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

    void Apply(const Pixel* source, Pixel* destination) const {
        for (const Span& span : spans_) {
            const Pixel* from = source + span.source;
            if (span.firstWeight == span.endWeight) {
                *destination++ = *from;
                continue;
            }
            Channels sum = 0;
            for (std::size_t w = span.firstWeight; w < span.endWeight; ++w)
                sum += Spread(*from++) * weights_[w];
            *destination++ = Gathered(sum);
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
} // namespace

LineScaling::Stretch LineScaling::SourceOf(Pixels first, Pixels end) const {
    const Pixels start = (first - destination_.start) * source_.length / destination_.length;
    const Pixels covered = (end - destination_.start) * source_.length;
    const Pixels stop = (covered + destination_.length - 1) / destination_.length;
    return {source_.start + start, stop - start};
}

void LineScaling::AppendWeights(Pixels destination, std::vector<std::uint32_t>& weights) const {
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

Raster LineScaling::Apply(const Plane& plane, const Area& wanted) const {
    const Stretch columns = SourceOf(wanted.left, wanted.right);
    const Area needed = Area::Of(columns.start, wanted.top, columns.length, wanted.Height());
    const auto source = plane.PixelsOf(needed);
    const Sums sums(*this, wanted.left, wanted.right, needed.left, LikeColumns(*source, needed));
    Raster scaled(wanted);
    for (Pixels y = wanted.top; y < wanted.bottom; ++y)
        sums.Apply(source->At(needed.left, y), scaled.At(wanted.left, y));
    return scaled;
}

} // namespace kqu::drawing

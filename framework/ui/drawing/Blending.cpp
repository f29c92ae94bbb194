#include "framework/ui/drawing/Blending.h"

namespace kqu::drawing {

namespace {
constexpr Opacity opaque = 255;
constexpr Pixel redAndBlue = 0x00FF00FF;
constexpr Pixel green = 0x0000FF00;

/// Divides both 16-bit halves by 255, to the nearest; each is at most 255 * 255.
std::uint32_t HalvesBy255(std::uint32_t halves) {
    halves += 0x00800080;
    return (halves + (halves >> 8U & redAndBlue)) >> 8U & redAndBlue;
}
} // namespace

Pixel Blended(Pixel source, Pixel below, Opacity opacity) {
    const Opacity rest = opaque - opacity;
    const std::uint32_t outer =
        HalvesBy255((source & redAndBlue) * opacity + (below & redAndBlue) * rest);
    const std::uint32_t middle =
        HalvesBy255(((source & green) >> 8U) * opacity + ((below & green) >> 8U) * rest);
    return outer | middle << 8U;
}

void BlendThroughMask(const Pixel* source, const Pixel* mask, Pixel* below, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const Opacity opacity = opaque - (mask[i] & 0xFFU);
        if (opacity == opaque)
            below[i] = source[i];
        else if (opacity != 0)
            below[i] = Blended(source[i], below[i], opacity);
    }
}

void BlendCovered(Pixel colour, const std::uint8_t* coverage, Pixel* below, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        if (coverage[i] != 0)
            below[i] = Blended(colour, below[i], coverage[i]);
}

void BlendPremultiplied(const std::uint32_t* source, Pixel* below, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const Opacity opacity = source[i] >> 24U;
        if (opacity != 0)
            below[i] = (source[i] & 0xFFFFFFU) + Blended(0, below[i], opacity);
    }
}

} // namespace kqu::drawing

#pragma once

#include "framework/ui/drawing/Raster.h"

#include <cstddef>
#include <cstdint>

// Lines of pixels onto lines of pixels, exact to the nearest value of each channel.

namespace kqu::drawing {

/// How much a pixel shows, 0 not at all to 255 fully.
using Opacity = std::uint32_t;

/// The nearest to (source * opacity + below * (255 - opacity)) / 255, in each channel.
[[nodiscard]] Pixel Blended(Pixel source, Pixel below, Opacity opacity);

/// Draws `count` pixels through a mask: a mask pixel's grey, any one of its channels, is how far
/// the pixel below stays.
void BlendThroughMask(const Pixel* source, const Pixel* mask, Pixel* below, std::size_t count);

/// Draws one colour, each pixel as much as it is covered.
void BlendCovered(Pixel colour, const std::uint8_t* coverage, Pixel* below, std::size_t count);

/// Draws premultiplied pixels 0xAARRGGBB.
void BlendPremultiplied(const std::uint32_t* source, Pixel* below, std::size_t count);

} // namespace kqu::drawing

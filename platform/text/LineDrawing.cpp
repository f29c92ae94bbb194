#include "platform/text/LineDrawing.h"

#include <algorithm>
#include <cmath>
#include <hb-ot.h>
#include <utility>

namespace kqu::platform {

namespace {
using Surface = CPointer<cairo_surface_t, cairo_surface_destroy>;
using Cairo = CPointer<cairo_t, cairo_destroy>;

/// Wider than any screen; glyphs further to the right are not made into pixels.
constexpr int widestImage = TextLayout::longest / 2;
constexpr std::uint32_t white = 0xFFFFFF;
/// The glyphs of several scripts; when there are more, all of them are drawn anew.
constexpr std::size_t mostGlyphBytes = 1U << 18U;

/// Has something drawn in a colour 0xRRGGBB and hands every pixel, premultiplied, to `take` in
/// reading order.
template <class Draw, class Take>
void Rasterise(const TextImage& image, std::uint32_t colour, Draw draw, Take take) {
    const Surface surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, image.width, image.height));
    const auto part = [colour](unsigned shift) {
        return static_cast<double>(colour >> shift & 0xFFU) / 255.0;
    };
    const Cairo cairo(cairo_create(surface.get()));
    cairo_set_source_rgb(cairo.get(), part(16), part(8), part(0));
    draw(*cairo, -image.left, -image.top);
    cairo_surface_flush(surface.get());
    const unsigned char* pixels = cairo_image_surface_get_data(surface.get());
    if (pixels == nullptr)
        return;
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < image.height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(
            pixels + static_cast<std::ptrdiff_t>(y) * stride);
        std::for_each(row, row + image.width, take);
    }
}

/// Takes up how much of each pixel is covered; whether it is drawn in colours of its own.
template <class Draw>
bool Cover(TextImage& image, Draw draw) {
    // In white, glyphs without colours of their own have the same value in all four channels.
    bool hasColours = false;
    image.coverage.clear();
    image.coverage.reserve(static_cast<std::size_t>(image.width) *
                           static_cast<std::size_t>(image.height));
    Rasterise(image, white, draw, [&](std::uint32_t pixel) {
        const std::uint32_t alpha = pixel >> 24U;
        hasColours = hasColours || pixel != alpha * 0x01010101U;
        image.coverage.push_back(static_cast<std::uint8_t>(alpha));
    });
    return hasColours;
}

/// Where ink is left, within reach of the baseline.
TextImage Frame(const PangoRectangle& ink, int size) {
    TextImage image;
    image.left = std::clamp(ink.x, -widestImage, widestImage);
    image.top = std::clamp(ink.y, -TextLayout::reach * size, TextLayout::reach * size);
    image.width = std::clamp(ink.x + ink.width - image.left, 0, widestImage);
    image.height = std::clamp(ink.y + ink.height, image.top, TextLayout::reach * size) - image.top;
    return image;
}

bool HasColours(PangoFont& font) {
    hb_face_t* const face = hb_font_get_face(pango_font_get_hb_font(&font));
    return hb_ot_color_has_layers(face) != 0 || hb_ot_color_has_png(face) != 0 ||
           hb_ot_color_has_svg(face) != 0;
}

/// By its outline, fitted to the pixels as the font wants it.
void FillGlyph(cairo_t& cairo, PangoFont& font, PangoGlyph glyph, double x, double baseline) {
    auto* const scaled = pango_cairo_font_get_scaled_font(reinterpret_cast<PangoCairoFont*>(&font));
    if (scaled == nullptr)
        return;
    cairo_set_scaled_font(&cairo, scaled);
    cairo_set_antialias(&cairo, CAIRO_ANTIALIAS_BEST);
    const cairo_glyph_t placed{glyph, x, baseline};
    cairo_glyph_path(&cairo, &placed, 1);
    cairo_fill(&cairo);
}

/// Draws a glyph whose start on the baseline is at (x, y) over what is in the line.
void Add(const TextImage& glyph, int x, int y, TextImage& line) {
    const int left = x + glyph.left - line.left;
    const int top = y + glyph.top - line.top;
    const int firstColumn = std::max(0, -left);
    const int endColumn = std::min(glyph.width, line.width - left);
    if (firstColumn >= endColumn)
        return;
    constexpr unsigned full = 255;
    for (int row = std::max(0, -top); row < std::min(glyph.height, line.height - top); ++row) {
        const auto source = static_cast<std::ptrdiff_t>(row) * glyph.width + firstColumn;
        const auto place = static_cast<std::ptrdiff_t>(top + row) * line.width + left + firstColumn;
        const std::uint8_t* from = glyph.coverage.data() + source;
        std::uint8_t* to = line.coverage.data() + place;
        for (int column = firstColumn; column < endColumn; ++column, ++from, ++to)
            *to = static_cast<std::uint8_t>(*to + (*from * (full - *to) + full / 2) / full);
    }
}
} // namespace

TextImage LineDrawing::Draw(const ShapedLine& line, int size, std::uint32_t colour) {
    TextImage image = Frame(line.Ink(), size);
    if (image.width <= 0 || image.height <= 0)
        return {};
    if (Compose(line, size, image))
        return image;
    const auto draw = [&](cairo_t& cairo, double x, double baseline) {
        line.Draw(cairo, x, baseline);
    };
    if (Cover(image, draw)) {
        image.coverage = {};
        Rasterise(image, colour, draw,
                  [&](std::uint32_t pixel) { image.colours.push_back(pixel); });
    }
    return image;
}

/// Fails where there is a glyph with colours, or the box that stands for one which no font has.
bool LineDrawing::Compose(const ShapedLine& line, int size, TextImage& image) {
    bool isPlain = true;
    image.coverage.assign(
        static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0);
    line.ForEachGlyph([&](PangoFont* font, PangoGlyph code, double x, double y) {
        if (!isPlain || code == PANGO_GLYPH_EMPTY || x > TextLayout::longest)
            return;
        const bool isInFont = font != nullptr && (code & PANGO_GLYPH_UNKNOWN_FLAG) == 0;
        const TextImage* const glyph = isInFont ? GlyphOf(*font, code, size) : nullptr;
        isPlain = glyph != nullptr;
        if (isPlain)
            Add(*glyph, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), image);
    });
    return isPlain;
}

const TextImage* LineDrawing::GlyphOf(PangoFont& font, PangoGlyph glyph, int size) {
    if (bytes_ > mostGlyphBytes) {
        faces_.clear();
        bytes_ = 0;
    }
    Face& face = faces_[&font];
    if (!face.font) {
        face.font.reset(static_cast<PangoFont*>(g_object_ref(&font)));
        face.hasColours = HasColours(font);
    }
    if (face.hasColours)
        return nullptr;
    if (const auto known = face.glyphs.find(glyph); known != face.glyphs.end())
        return &known->second;
    PangoRectangle ink;
    pango_font_get_glyph_extents(&font, glyph, &ink, nullptr);
    pango_extents_to_pixels(&ink, nullptr);
    TextImage image = Frame(ink, size);
    if (image.width > 0 && image.height > 0)
        Cover(image, [&](cairo_t& cairo, double x, double baseline) {
            FillGlyph(cairo, font, glyph, x, baseline);
        });
    bytes_ += sizeof image + image.coverage.size();
    return &face.glyphs.emplace(glyph, std::move(image)).first->second;
}

} // namespace kqu::platform

#pragma once

#include "platform/text/ShapedLine.h"
#include "platform/text/TextLayout.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>

namespace kqu::platform {

/// Makes pixels of shaped lines. Lines that change twice a second are made of the same few glyphs:
/// each glyph is drawn once and its pixels are kept. Cairo's own cache of glyphs is not used by
/// that; it would take a quarter of a megabyte from the first line on.
class LineDrawing {
  public:
    /// The line's pixels, at a size (pixels to the em) that is the same at every call, in a colour
    /// 0xRRGGBB, which matters only where glyphs bring colours of their own.
    [[nodiscard]] TextImage Draw(const ShapedLine& line, int size, std::uint32_t colour);

  private:
    struct Face {
        GObjectPointer<PangoFont> font;
        bool hasColours;
        std::unordered_map<PangoGlyph, TextImage> glyphs;
    };

    [[nodiscard]] bool Compose(const ShapedLine& line, int size, TextImage& image);
    /// Nil for a font with colours of its own.
    [[nodiscard]] const TextImage* GlyphOf(PangoFont& font, PangoGlyph glyph, int size);

    std::map<PangoFont*, Face> faces_;
    std::size_t bytes_ = 0;
};

} // namespace kqu::platform

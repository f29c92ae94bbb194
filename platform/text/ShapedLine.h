#pragma once

#include "platform/CDeleter.h"

#include <pango/pangocairo.h>
#include <string>
#include <vector>

namespace kqu::platform {

inline void DropGObject(void* object) {
    g_object_unref(object);
}
using PangoContextPointer = CPointer<PangoContext, DropGObject>;

/// A line of text turned into glyphs, in the order in which they are seen from left to right.
class ShapedLine {
  public:
    /// `text` must be UTF-8 without control characters.
    ShapedLine(PangoContext& context, const std::string& text);

    /// Pixels.
    [[nodiscard]] double Width() const;
    /// What the glyphs cover, in pixels relative to the start on the baseline, rounded outwards.
    [[nodiscard]] PangoRectangle Ink() const;
    /// Draws with the source that is set; the current point does not matter.
    void Draw(cairo_t& cairo, double x, double baseline) const;

    /// Calls `visit` with the font, the glyph and its place, in pixels relative to the start on the
    /// baseline, y downwards.
    template <class Visit>
    void ForEachGlyph(Visit visit) const {
        double x = 0;
        for (const Run& run : runs_)
            for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
                const PangoGlyphInfo& info = run.glyphs->glyphs[i];
                visit(run.item->analysis.font, info.glyph,
                      (x + info.geometry.x_offset) / PANGO_SCALE,
                      static_cast<double>(info.geometry.y_offset) / PANGO_SCALE);
                x += info.geometry.width;
            }
    }

  private:
    struct Run {
        CPointer<PangoItem, pango_item_free> item;
        CPointer<PangoGlyphString, pango_glyph_string_free> glyphs;
        /// Pango units.
        int width;
    };

    std::vector<Run> runs_;
};

} // namespace kqu::platform

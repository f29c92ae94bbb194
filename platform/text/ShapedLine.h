#pragma once

#include "platform/CDeleter.h"

#include <pango/pangocairo.h>
#include <string>

namespace kqu::platform {

inline void DropGObject(void* object) {
    g_object_unref(object);
}
template <class T>
using GObjectPointer = CPointer<T, DropGObject>;

/// A line of text turned into glyphs, in the order in which they are seen from left to right.
class ShapedLine {
  public:
    /// `text` must be UTF-8 without control characters.
    ShapedLine(PangoContext& context, const std::string& text)
        : layout_(pango_layout_new(&context)) {
        pango_layout_set_single_paragraph_mode(layout_.get(), TRUE);
        pango_layout_set_text(layout_.get(), text.data(), static_cast<int>(text.size()));
        line_ = pango_layout_get_line_readonly(layout_.get(), 0);
    }

    /// Pixels.
    [[nodiscard]] double Width() const {
        PangoRectangle logical;
        pango_layout_line_get_extents(line_, nullptr, &logical);
        return static_cast<double>(logical.width) / PANGO_SCALE;
    }

    /// What the glyphs cover, in pixels relative to the start on the baseline, rounded outwards.
    [[nodiscard]] PangoRectangle Ink() const {
        PangoRectangle ink;
        pango_layout_line_get_extents(line_, &ink, nullptr);
        pango_extents_to_pixels(&ink, nullptr);
        return ink;
    }

    /// Draws with the source that is set; the current point does not matter.
    void Draw(cairo_t& cairo, double x, double baseline) const {
        cairo_move_to(&cairo, x, baseline);
        pango_cairo_show_layout_line(&cairo, line_);
    }

    /// Calls `visit` with the font, the glyph and its place, in pixels relative to the start on the
    /// baseline, y downwards.
    template <class Visit>
    void ForEachGlyph(Visit visit) const {
        double x = 0;
        for (const GSList* link = line_->runs; link != nullptr; link = link->next) {
            const auto* run = static_cast<const PangoGlyphItem*>(link->data);
            for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
                const PangoGlyphInfo& info = run->glyphs->glyphs[i];
                visit(run->item->analysis.font, info.glyph,
                      (x + info.geometry.x_offset) / PANGO_SCALE,
                      static_cast<double>(info.geometry.y_offset) / PANGO_SCALE);
                x += info.geometry.width;
            }
        }
    }

  private:
    GObjectPointer<PangoLayout> layout_;
    PangoLayoutLine* line_;
};

} // namespace kqu::platform

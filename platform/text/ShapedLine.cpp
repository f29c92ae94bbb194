#include "platform/text/ShapedLine.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kqu::platform {

namespace {
using Items = CPointer<GList, g_list_free>;

/// The items of the text in the order in which they are seen.
Items ItemsOf(PangoContext& context, const std::string& text) {
    const auto length = static_cast<int>(
        std::min(text.size(), static_cast<std::size_t>(std::numeric_limits<int>::max())));
    const CPointer<PangoAttrList, pango_attr_list_unref> attributes(pango_attr_list_new());
    // The first letter that has a direction decides; where none has, left to right.
    const Items logical(pango_itemize_with_base_dir(&context, PANGO_DIRECTION_WEAK_LTR, text.data(),
                                                    0, length, attributes.get(), nullptr));
    return Items(pango_reorder_items(logical.get()));
}

/// Pixels around an area in pango units. Far more than can ever be seen is cut off.
PangoRectangle OutwardPixels(double left, double top, double right, double bottom) {
    constexpr double furthest = 1 << 20;
    const auto pixel = [=](double place) {
        return static_cast<int>(std::clamp(place, -furthest, furthest));
    };
    const int x = pixel(std::floor(left / PANGO_SCALE));
    const int y = pixel(std::floor(top / PANGO_SCALE));
    return {x, y, pixel(std::ceil(right / PANGO_SCALE)) - x,
            pixel(std::ceil(bottom / PANGO_SCALE)) - y};
}
} // namespace

ShapedLine::ShapedLine(PangoContext& context, const std::string& text) {
    if (text.empty())
        return;
    const Items items = ItemsOf(context, text);
    for (const GList* link = items.get(); link != nullptr; link = link->next) {
        auto* item = static_cast<PangoItem*>(link->data);
        Run run{CPointer<PangoItem, pango_item_free>(item),
                CPointer<PangoGlyphString, pango_glyph_string_free>(pango_glyph_string_new()), 0};
        pango_shape_with_flags(text.data() + item->offset, item->length, text.data(),
                               static_cast<int>(text.size()), &item->analysis, run.glyphs.get(),
                               PANGO_SHAPE_ROUND_POSITIONS);
        run.width = pango_glyph_string_get_width(run.glyphs.get());
        runs_.push_back(std::move(run));
    }
}

double ShapedLine::Width() const {
    double width = 0;
    for (const Run& run : runs_)
        width += run.width;
    return width / PANGO_SCALE;
}

PangoRectangle ShapedLine::Ink() const {
    double x = 0;
    double left = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();
    double top = left;
    double bottom = right;
    for (const Run& run : runs_) {
        PangoRectangle ink;
        pango_glyph_string_extents(run.glyphs.get(), run.item->analysis.font, &ink, nullptr);
        if (ink.width > 0 && ink.height > 0) {
            left = std::min(left, x + ink.x);
            right = std::max(right, x + ink.x + ink.width);
            top = std::min(top, static_cast<double>(ink.y));
            bottom = std::max(bottom, static_cast<double>(ink.y) + ink.height);
        }
        x += run.width;
    }
    return left < right ? OutwardPixels(left, top, right, bottom) : PangoRectangle{0, 0, 0, 0};
}

void ShapedLine::Draw(cairo_t& cairo, double x, double baseline) const {
    for (const Run& run : runs_) {
        cairo_move_to(&cairo, x, baseline);
        pango_cairo_show_glyph_string(&cairo, run.item->analysis.font, run.glyphs.get());
        x += static_cast<double>(run.width) / PANGO_SCALE;
    }
}

} // namespace kqu::platform

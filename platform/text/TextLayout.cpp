#include "platform/text/TextLayout.h"

#include "platform/QuietErrors.h"
#include "platform/interfaces/NativeWindow.h"
#include "platform/text/LineDrawing.h"
#include "platform/text/ShapedLine.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kqu::platform {

namespace {
using FontOptions = CPointer<cairo_font_options_t, cairo_font_options_destroy>;
using Description = CPointer<PangoFontDescription, pango_font_description_free>;

constexpr int smallestSize = 1;
constexpr int largestSize = 500;
constexpr std::size_t fontsKept = 8;
/// A list is painted twice a second; what three paints did not ask for is not on show any more.
constexpr std::chrono::milliseconds lineLifetime{2000};
constexpr std::size_t lineBytes = 1U << 20U;

/// The same pixels on every desktop: no setting of the user or of the display takes part.
GObjectPointer<PangoContext> MakeContext(PangoFontMap* fontMap, int size) {
    GObjectPointer<PangoContext> context(pango_font_map_create_context(fontMap));
    const FontOptions options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_FULL);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(context.get(), options.get());
    const Description face(pango_font_description_from_string("sans-serif"));
    pango_font_description_set_absolute_size(face.get(), static_cast<double>(size) * PANGO_SCALE);
    pango_context_set_font_description(context.get(), face.get());
    return context;
}

std::size_t BytesOf(const TextImage& image) {
    return sizeof image + image.coverage.size() + image.colours.size() * sizeof(std::uint32_t);
}
} // namespace

/// Our own, so that all that belongs to it goes with it.
struct TextLayout::FontMap {
    GObjectPointer<PangoFontMap> object{pango_cairo_font_map_new()};
};

class TextLayout::Font {
  public:
    Font(const FontMap& fontMap, int pixels)
        : size(pixels), context(MakeContext(fontMap.object.get(), pixels)) {}

    int size;
    GObjectPointer<PangoContext> context;
    LineDrawing drawing;
    RecentCache<Line> lines{lineLifetime, lineBytes};
};

TextLayout& TextLayout::Shared() {
    static TextLayout shared;
    return shared;
}

TextLayout::TextLayout() = default;
TextLayout::~TextLayout() = default;

/// Settings of the user's fonts that can't be read are complained of, in a thread that begins with
/// the font map and that the first load waits for.
void TextLayout::LoadQuietly(int size) {
    const QuietErrors quiet;
    fontMap_ = std::make_unique<FontMap>();
    const GObjectPointer<PangoContext> context = MakeContext(fontMap_->object.get(), size);
    const CPointer<PangoFontMetrics, pango_font_metrics_unref> metrics(
        pango_context_get_metrics(context.get(), nullptr, nullptr));
}

TextLayout::Font& TextLayout::FontOf(int size) {
    const int pixels = std::clamp(size, smallestSize, largestSize);
    if (const auto known = fonts_.find(pixels); known != fonts_.end())
        return *known->second;
    if (!fontMap_)
        LoadQuietly(pixels);
    if (fonts_.size() >= fontsKept)
        fonts_.clear();
    return *fonts_.emplace(pixels, std::make_unique<Font>(*fontMap_, pixels)).first->second;
}

double TextLayout::Width(std::string_view text, int size) {
    text = StartOf(text, longestMeasured);
    Font& font = FontOf(size * DeviceScale());
    const auto now = std::chrono::steady_clock::now();
    if (const Line* known = font.lines.Find(text, now))
        return known->width / DeviceScale();
    const ShapedLine shaped(*font.context, PlainText(text).utf8);
    return font.lines.Enter(std::string(text), {shaped.Width(), 0, nullptr}, 0, now).width /
           DeviceScale();
}

double TextLayout::WidthOnce(const std::string& plainText, int size) {
    return ShapedLine(*FontOf(size * DeviceScale()).context, plainText).Width() / DeviceScale();
}

std::shared_ptr<const TextImage> TextLayout::Image(std::string_view text, int size,
                                                   std::uint32_t colour) {
    Font& font = FontOf(size);
    const auto now = std::chrono::steady_clock::now();
    Line* line = font.lines.Find(text, now);
    if (line != nullptr && line->image && (line->image->colours.empty() || line->colour == colour))
        return line->image;
    const ShapedLine shaped(*font.context, PlainText(text).utf8);
    if (line == nullptr)
        line = &font.lines.Enter(std::string(text), {shaped.Width(), 0, nullptr}, 0, now);
    line->image = std::make_shared<TextImage>(font.drawing.Draw(shaped, font.size, colour));
    line->colour = colour;
    auto image = line->image;
    font.lines.Grow(text, BytesOf(*image));
    return image;
}

std::vector<std::size_t> TextLayout::Clusters(const PlainText& text) {
    const auto length = static_cast<int>(text.utf8.size());
    std::vector<PangoLogAttr> attributes(text.Length() + 1);
    pango_get_log_attrs(text.utf8.data(), length, -1, pango_language_get_default(),
                        attributes.data(), static_cast<int>(attributes.size()));
    std::vector<std::size_t> bounds;
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (attributes[i].is_cursor_position || i == 0 || i == text.Length())
            bounds.push_back(i);
    return bounds;
}

std::string_view TextLayout::Enough(std::string_view text, int pixels) {
    // Two bytes a pixel: a letter takes about half of that, a letter with a pile of marks, or an
    // emoji made of several, not more.
    constexpr std::size_t slack = 256;
    return StartOf(text, 2 * static_cast<std::size_t>(std::max(pixels, 0)) + slack);
}

} // namespace kqu::platform

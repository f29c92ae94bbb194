#pragma once

#include "platform/text/PlainText.h"
#include "platform/text/RecentCache.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::platform {

/// A line of text as pixels, placed relative to its start on the baseline.
struct TextImage {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    /// How much of each pixel the text covers, 0 to 255, line by line; empty if `colours` is not.
    std::vector<std::uint8_t> coverage;
    /// Only where glyphs bring colours of their own: premultiplied 0xAARRGGBB.
    std::vector<std::uint32_t> colours;
};

/// Lays out single lines of text in the default face, fontconfig's `sans-serif`, with pango's
/// fallback for every script. Sizes are pixels to the em and depend on no setting of the desktop.
/// Text is any bytes, always plain, and always one line; right-to-left text starts at the left too.
class TextLayout {
  public:
    /// The one that everything draws and measures with.
    [[nodiscard]] static TextLayout& Shared();

    TextLayout();
    ~TextLayout();
    TextLayout(const TextLayout&) = delete;
    TextLayout& operator=(const TextLayout&) = delete;

    /// Width in logical pixels of text of a logical size, measured as it is drawn, at the device's
    /// size; remembered while it is in use. Of a text of more than `longestMeasured` bytes, which
    /// fills any screen, that of its start.
    [[nodiscard]] double Width(std::string_view text, int size);
    /// The same for a line that is not expected to be asked for again.
    [[nodiscard]] double WidthOnce(const std::string& plainText, int size);

    /// The line's device pixels, the size being one as well, in a colour 0xRRGGBB; remembered while
    /// it is in use. What lies further from the baseline than `reach` text sizes, or from the start
    /// than `longest` pixels, is cut off.
    [[nodiscard]] std::shared_ptr<const TextImage> Image(std::string_view text, int size,
                                                         std::uint32_t colour);
    static constexpr int reach = 3;
    static constexpr int longest = 32768;
    static constexpr std::size_t longestMeasured = 16384;

    /// The bounds of whole characters as readers see them (grapheme clusters), as indices of
    /// characters: 0 first, the length last.
    [[nodiscard]] std::vector<std::size_t> Clusters(const PlainText& text);

    /// The start of a text that is enough to fill a line of so many pixels.
    [[nodiscard]] static std::string_view Enough(std::string_view text, int pixels);

  private:
    struct Line {
        double width = 0;
        std::uint32_t colour = 0;
        std::shared_ptr<const TextImage> image;
    };
    class Font;

    void LoadQuietly(int size);
    [[nodiscard]] Font& FontOf(int size);

    struct FontMap;

    std::unique_ptr<FontMap> fontMap_;
    std::map<int, std::unique_ptr<Font>> fonts_;
};

} // namespace kqu::platform

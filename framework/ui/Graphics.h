#pragma once

#include "framework/ui/Colour.h"
#include "framework/values/Object.h"
#include "platform/interfaces/NativeWindow.h"

#include <memory>
#include <string_view>

namespace kqu {

namespace drawing {
struct Area;
struct Command;
} // namespace drawing

class Picture;

/// As a width or a height of DrawPicture: the picture's own. No other number means that; a width or
/// height of 0 or less draws nothing.
inline constexpr int naturalSize = -10000;

/// Draws on a picture, or on a part of one. Coordinates are logical pixels from the top left of
/// what is drawn on, y downwards; what falls outside is clipped, whatever the numbers. The colour
/// and the size of text stay as they were set: black and 12 pixels to begin with.
class Graphics {
  public:
    /// Draws on a part of a picture, such as a control's place in the pixels of its window: the
    /// origin is the part's top left, and everything is clipped to the part.
    Graphics(const Ref<Picture>& picture, const platform::Rect& area);

    /// Draws on the whole of a picture, which must outlive it; a picture makes its own.
    explicit Graphics(Picture& picture);
    Graphics(const Graphics&) = delete;
    Graphics& operator=(const Graphics&) = delete;

    void SetForeColor(Colour colour) { foreColor_ = colour; }

    /// Pixels to the em, whatever the resolution of the display.
    void SetTextSize(int pixels) { textSize_ = pixels; }

    void FillRect(int x, int y, int width, int height);

    /// Draws the source rectangle of a picture through the picture's mask, scaled into the
    /// destination rectangle. Parts of the source that lie outside the picture draw nothing.
    void DrawPicture(const Picture& image, int x, int y, int destinationWidth = naturalSize,
                     int destinationHeight = naturalSize, int sourceX = 0, int sourceY = 0,
                     int sourceWidth = naturalSize, int sourceHeight = naturalSize);

    /// Draws UTF-8 text as one plain line, left-aligned at x. Bytes that are no UTF-8 show as
    /// replacement characters, control characters as blanks. Text is never wrapped or condensed.
    void DrawString(std::string_view text, int x, int baseline, int wrapWidth = 0,
                    bool condense = false);

    /// Width in pixels of the text as it would be drawn.
    [[nodiscard]] double StringWidth(std::string_view text) const;

    /// The colour of one pixel; white outside.
    [[nodiscard]] Colour Pixel(int x, int y) const;
    void SetPixel(int x, int y, Colour colour);

  private:
    // Both in device pixels of the picture.
    [[nodiscard]] drawing::Area Clip() const;
    [[nodiscard]] drawing::Area OnDevice(const drawing::Area& area) const;
    void Draw(drawing::Command command);

    Ref<Picture> keptAlive_;
    Picture& picture_;
    platform::Rect area_;
    Colour foreColor_;
    int textSize_ = 12;
};

} // namespace kqu

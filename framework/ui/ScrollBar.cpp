#include "framework/ui/ScrollBar.h"

#include "framework/ui/Colour.h"
#include "framework/ui/Graphics.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kqu {

namespace {
constexpr int thumbMargin = 2;
constexpr int shortestThumb = 18;

const Colour trackColour = RGB(250, 251, 252);
const Colour trackEdgeColour = RGB(226, 230, 236);
const Colour thumbColour = RGB(118, 134, 160);
const Colour heldThumbColour = RGB(84, 105, 138);
} // namespace

ScrollBar::ScrollBar(Window& ownerWindow, const ScrollBarSettings& settings)
    : Control(ownerWindow, settings), bar_(settings) {}

void ScrollBar::SetMaximum(int maximum) {
    if (std::exchange(bar_.Maximum, maximum) != maximum)
        Refresh(Erasing::EraseBackground);
}

void ScrollBar::SetValue(int value) {
    const int kept = std::max(bar_.Minimum, std::min(value, bar_.Maximum));
    if (std::exchange(bar_.Value, kept) == kept)
        return;
    Refresh(Erasing::EraseBackground);
    if (ValueChanged)
        ValueChanged();
}

void ScrollBar::SetInSight(int units) {
    if (std::exchange(inSight_, units) != units)
        Refresh(Erasing::EraseBackground);
}

platform::Rect ScrollBar::Thumb() const {
    const int range = bar_.Maximum - bar_.Minimum;
    const int track = Height() - 2 * thumbMargin;
    if (range < 1 || track < 1)
        return {};
    const std::int64_t inSight = std::int64_t{track} * inSight_ / (std::int64_t{range} + inSight_);
    const int length = std::min(track, std::max(shortestThumb, static_cast<int>(inSight)));
    const std::int64_t way = track - length;
    const std::int64_t passed = std::clamp(bar_.Value - bar_.Minimum, 0, range);
    return {thumbMargin, thumbMargin + static_cast<int>(way * passed / range),
            Width() - 2 * thumbMargin, length};
}

int ScrollBar::ValueAt(int thumbTop) const {
    const platform::Rect thumb = Thumb();
    const std::int64_t way = Height() - 2 * thumbMargin - thumb.height;
    if (way < 1)
        return bar_.Value;
    const std::int64_t range = bar_.Maximum - bar_.Minimum;
    const std::int64_t passed = std::clamp<std::int64_t>(thumbTop - thumbMargin, 0, way);
    return bar_.Minimum + static_cast<int>((passed * range + way / 2) / way);
}

void ScrollBar::Draw(Graphics& graphics) {
    graphics.SetForeColor(trackColour);
    graphics.FillRect(0, 0, Width(), Height());
    graphics.SetForeColor(trackEdgeColour);
    graphics.FillRect(0, 0, 1, Height());
    const platform::Rect thumb = Thumb();
    if (thumb.IsEmpty())
        return;
    // Corners rounded by a pixel: the first and the last line are inset.
    graphics.SetForeColor(grabbedAt_ ? heldThumbColour : thumbColour);
    graphics.FillRect(thumb.x + 1, thumb.y, thumb.width - 2, thumb.height);
    graphics.FillRect(thumb.x, thumb.y + 1, thumb.width, thumb.height - 2);
}

bool ScrollBar::TakePress(platform::Point point) {
    const platform::Rect thumb = Thumb();
    if (thumb.IsEmpty())
        return true;
    if (point.y < thumb.y) {
        SetValue(bar_.Value - bar_.PageStep);
    } else if (point.y >= thumb.y + thumb.height) {
        SetValue(bar_.Value + bar_.PageStep);
    } else {
        grabbedAt_ = point.y - thumb.y;
        Refresh(Erasing::EraseBackground);
    }
    return true;
}

void ScrollBar::TakeDrag(platform::Point point) {
    if (grabbedAt_)
        SetValue(ValueAt(point.y - *grabbedAt_));
}

void ScrollBar::TakeRelease(platform::Point) {
    if (std::exchange(grabbedAt_, std::nullopt))
        Refresh(Erasing::EraseBackground);
}

bool ScrollBar::TakeWheel(platform::Point, int, int deltaY) {
    if (deltaY != 0)
        SetValue(bar_.Value + (deltaY > 0 ? bar_.LineStep : -bar_.LineStep));
    return true;
}

} // namespace kqu

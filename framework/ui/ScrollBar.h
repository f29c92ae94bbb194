#pragma once

#include "framework/ui/Control.h"

#include <optional>

namespace kqu {

/// What only a scroll bar is given at its creation.
struct ScrollBarSettings : ControlSettings {
    int Minimum = 0;
    int Maximum = 100;
    int Value = 0;
    int LineStep = 1;
    int PageStep = 20;
    bool LiveScroll = true;
};

/// A vertical scroll bar: a thumb on a track. Dragging the thumb scrolls live, a press on the track
/// goes by a page, the wheel by a line.
class ScrollBar : public Control {
  public:
    ScrollBar(Window& ownerWindow, const ScrollBarSettings& settings);

    [[nodiscard]] int Maximum() const { return bar_.Maximum; }
    [[nodiscard]] int Value() const { return bar_.Value; }

    /// Leaves the value alone, even if it lies beyond the new maximum: whoever lowers the maximum
    /// decides when the value follows.
    void SetMaximum(int maximum);
    /// Keeps to the limits, the minimum going first. Raises `ValueChanged` if the value changed.
    void SetValue(int value);

    /// How many units of the range can be seen at a time, at least 1: the thumb shows their share.
    void SetInSight(int units);

    std::function<void()> ValueChanged;

    /// The thumb within the control; empty when there is nothing to scroll.
    [[nodiscard]] platform::Rect Thumb() const;

    void Draw(Graphics& graphics) override;
    bool TakePress(platform::Point point) override;
    void TakeDrag(platform::Point point) override;
    void TakeRelease(platform::Point point) override;
    bool TakeWheel(platform::Point point, int deltaX, int deltaY) override;

  private:
    [[nodiscard]] int ValueAt(int thumbTop) const;

    ScrollBarSettings bar_;
    int inSight_ = 1;
    /// Where on the thumb it was taken, while it is held.
    std::optional<int> grabbedAt_;
};

} // namespace kqu

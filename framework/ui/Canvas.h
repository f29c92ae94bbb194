#pragma once

#include "framework/ui/Control.h"

#include <memory>

namespace kqu {

/// What only a canvas is given at its creation.
struct CanvasSettings : ControlSettings {
    bool UseFocusRing = true, AcceptTabs = false, EraseBackground = true;
};

/// A control whose face and behaviour are its owner's: every event is a function that the owner
/// binds.
class Canvas : public Control {
  public:
    Canvas(Window& ownerWindow, const CanvasSettings& settings)
        : Control(ownerWindow, settings), Settings(settings) {}

    const CanvasSettings Settings;

    /// Draws on the canvas at once, outside its `Paint` event; what was drawn is shown with the
    /// window's next change.
    [[nodiscard]] std::unique_ptr<kqu::Graphics> Graphics();

    std::function<void(kqu::Graphics&)> Paint;
    std::function<bool(int x, int y)> MouseDown;
    std::function<void(int x, int y)> MouseDrag;
    std::function<void(int x, int y)> MouseUp;
    std::function<bool(int x, int y, int deltaX, int deltaY)> MouseWheel;

    void Draw(kqu::Graphics& graphics) override;
    bool TakePress(platform::Point point) override;
    void TakeDrag(platform::Point point) override;
    void TakeRelease(platform::Point point) override;
    bool TakeWheel(platform::Point point, int deltaX, int deltaY) override;
};

} // namespace kqu

#include "framework/ui/Canvas.h"

#include "framework/ui/Graphics.h"
#include "framework/ui/Window.h"

namespace kqu {

std::unique_ptr<kqu::Graphics> Canvas::Graphics() {
    return ownerWindow().GraphicsFor(*this);
}

void Canvas::Draw(kqu::Graphics& graphics) {
    if (Paint)
        Paint(graphics);
}

bool Canvas::TakePress(platform::Point point) {
    return MouseDown && MouseDown(point.x, point.y);
}

void Canvas::TakeDrag(platform::Point point) {
    if (MouseDrag)
        MouseDrag(point.x, point.y);
}

void Canvas::TakeRelease(platform::Point point) {
    if (MouseUp)
        MouseUp(point.x, point.y);
}

bool Canvas::TakeWheel(platform::Point point, int deltaX, int deltaY) {
    if (!MouseWheel)
        return false;
    // The handler's own answer is not asked for: a canvas with a wheel handler is where the turn
    // was meant to go.
    static_cast<void>(MouseWheel(point.x, point.y, deltaX, deltaY));
    return true;
}

} // namespace kqu

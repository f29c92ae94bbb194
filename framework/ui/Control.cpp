#include "framework/ui/Control.h"

#include "framework/ui/Window.h"

#include <utility>

namespace kqu {

Control::Control(Window& ownerWindow, ControlSettings settings)
    : ownerWindow_(ownerWindow), settings_(std::move(settings)) {
    ownerWindow_.Adopt(*this);
}

Control::~Control() {
    ownerWindow_.Disown(*this);
}

platform::Rect Control::Bounds() const {
    return {Left(), Top(), Width(), Height()};
}

void Control::SetLeft(int left) {
    Change(settings_.Left, left);
}

void Control::SetTop(int top) {
    Change(settings_.Top, top);
}

void Control::SetWidth(int width) {
    Change(settings_.Width, width);
}

void Control::SetHeight(int height) {
    Change(settings_.Height, height);
}

void Control::Change(int& property, int value) {
    if (std::exchange(property, value) != value)
        ownerWindow_.InvalidateLayout();
}

void Control::Refresh(Erasing erasing) {
    ownerWindow_.Invalidate(*this, erasing);
}

} // namespace kqu

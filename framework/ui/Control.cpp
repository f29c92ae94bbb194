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

void Control::Change(int& property, int value) {
    if (std::exchange(property, value) != value)
        ownerWindow_.InvalidateLayout();
}

void Control::Refresh(Erasing erasing) {
    ownerWindow_.Invalidate(*this, erasing);
}

} // namespace kqu

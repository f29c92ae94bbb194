#pragma once

#include "framework/ui/Control.h"

#include <cstdint>

namespace kqu {

/// What a control without a face has of a control: its window, and its index among an array of
/// controls.
class InvisibleControl {
  public:
    explicit InvisibleControl(Window& ownerWindow) : ownerWindow_(ownerWindow) {}

    [[nodiscard]] Window& ownerWindow() const { return ownerWindow_; }
    [[nodiscard]] std::uint32_t Index() const { return ControlSettings::noIndex; }

  private:
    Window& ownerWindow_;
};

} // namespace kqu

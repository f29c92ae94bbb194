#pragma once

#include "framework/Runtime.h"

#include <cstdint>

namespace kqu {

/// A screen in pixels; screen 0 is the main one (RandR's primary monitor).
struct ScreenArea {
    int Left = 0;
    int Top = 0;
    int Width = 0;
    int Height = 0;
};

/// The screen of that number. Raises OutOfBoundsException for a screen that is not there.
[[nodiscard]] ScreenArea Screen(int index);

/// The pointer, anywhere on the display.
namespace System {
/// Whether the primary mouse button is held anywhere. The wheel is no button.
[[nodiscard]] inline bool MouseDown() {
    return Runtime::Current().Machine().windows.PrimaryButtonDown();
}
/// The pointer's place relative to the main screen's top left, in pixels, as it is now.
[[nodiscard]] inline int MouseX() {
    return Runtime::Current().Machine().windows.PointerPosition().x;
}
[[nodiscard]] inline int MouseY() {
    return Runtime::Current().Machine().windows.PointerPosition().y;
}
} // namespace System

/// Time in sixtieths of a second, on a clock that never jumps. Wraps around as an Int32.
[[nodiscard]] std::int32_t Ticks();

/// Ticks from one tick count to a later one, right across the wrap as well.
[[nodiscard]] std::int32_t TicksBetween(std::int32_t earlier, std::int32_t later);

} // namespace kqu

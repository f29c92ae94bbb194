#pragma once

namespace kqu::platform {

/// Device pixels to one logical pixel, in both directions: 1, 2 or 3. The window system sets it
/// from the desktop's settings. Whoever draws, measures text, or talks to the server converts by
/// it; everybody else counts in logical pixels.
[[nodiscard]] inline int& DeviceScale() {
    static int scale = 1;
    return scale;
}

} // namespace kqu::platform

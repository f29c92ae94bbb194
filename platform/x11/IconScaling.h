#pragma once

#include "platform/interfaces/NativeWindow.h"

#include <cstdint>
#include <vector>

namespace kqu::platform {

/// A frame as an icon in the form of `_NET_WM_ICON` (EWMH): width, height, then `side` times `side`
/// pixels of 0xAARRGGBB. The frame is scaled down to fit, and stands in the middle; what it
/// does not reach is transparent. It is never scaled up.
[[nodiscard]] std::vector<std::uint32_t> ScaledIcon(const Frame& frame, int side);

} // namespace kqu::platform

#pragma once

#include "framework/ui/drawing/Raster.h"

#include <cstddef>
#include <optional>
#include <span>

namespace kqu::drawing {

/// The pixels of a PNG file, what is transparent laid on white; nothing if the file is broken.
[[nodiscard]] std::optional<Raster> ReadPng(std::span<const std::byte> file);

} // namespace kqu::drawing

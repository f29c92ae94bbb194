#pragma once

#include "platform/text/TextLayout.h"

#include <string>
#include <string_view>

namespace kqu::platform {

/// Which part of a text gives way.
enum class Giving { Middle, End };

/// Shortens a text so that it is at most `limit` pixels wide, with U+2026 for what was taken out.
/// Only whole grapheme clusters go, and no more of them than need be; what stays are the text's own
/// bytes. A text of more than two bytes a pixel, and some, always counts as too wide. From the
/// middle, start and end give about the same number. A text that fits comes back as it is; where
/// not even the ellipsis fits, nothing is left.
[[nodiscard]] std::string Truncated(TextLayout& layout, std::string_view text, int size, int limit,
                                    Giving giving);

} // namespace kqu::platform

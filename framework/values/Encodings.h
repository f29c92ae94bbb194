#pragma once

#include <string>
#include <string_view>

namespace kqu {

/// The text in UTF-16; a byte that is no UTF-8 becomes the replacement character.
[[nodiscard]] std::u16string ToUtf16(std::string_view text);

} // namespace kqu

#pragma once

#include <string_view>

namespace kqu {

[[nodiscard]] bool IsBinaryPropertyList(std::string_view bytes);

/// Whether a binary list, written out in full, is of bounded size and depth and its texts are free
/// of NULs. Whether it is sound beyond that, the library tells.
[[nodiscard]] bool IsBoundedBinaryList(std::string_view bytes);

} // namespace kqu

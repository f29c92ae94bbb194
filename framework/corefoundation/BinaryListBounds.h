#pragma once

#include <string_view>

namespace kqu {

/// Whether a binary property list, written out in full, is of bounded size and depth and its texts
/// are free of NULs. The library takes that on trust: it copies a shared value each time it is
/// mentioned, follows any depth on the stack, and needs the square of a list's length in time.
/// Whether the list is sound beyond that, the library finds out.
[[nodiscard]] bool IsBoundedBinaryList(std::string_view bytes);

} // namespace kqu

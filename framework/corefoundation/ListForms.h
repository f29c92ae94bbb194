#pragma once

#include "framework/corefoundation/CFValues.h"

#include <string_view>

namespace kqu {

/// Containers in one another; a preference file has a handful.
inline constexpr int deepestList = 200;

/// The property list in an XML text; nil unless the text is one whole list: known elements that are
/// closed in their order, keys and values in turn, and numbers in their places.
[[nodiscard]] Ref<CFObject> ReadXmlPropertyList(std::string_view text);

/// Whether a binary property list, written out in full, is of bounded size and depth and its texts
/// are free of NULs. The library takes that on trust: it copies a shared value each time it is
/// mentioned, follows any depth on the stack, and needs the square of a list's length in time.
/// Whether the list is sound beyond that, the library finds out.
[[nodiscard]] bool IsBoundedBinaryList(std::string_view bytes);

} // namespace kqu

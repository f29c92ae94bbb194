#pragma once

#include "framework/corefoundation/CFValues.h"

#include <string_view>

namespace kqu {

class FolderItem;

/// The property list in XML or binary form in these bytes; nil if they are no property list or a
/// broken one, as a whole, or more than `longestFile`. Nothing is fetched, no entity is expanded
/// beyond the five of XML.
[[nodiscard]] Ref<CFObject> CFPropertyListParse(std::string_view bytes);

/// The property list in a file; nil if the file can't be opened, or holds none.
[[nodiscard]] Ref<CFObject> CFPropertyListOf(const FolderItem& file);

} // namespace kqu

#pragma once

#include "framework/corefoundation/CFObject.h"

#include <string_view>

namespace kqu {

/// The property list in an XML text; nil unless the text is one whole list: known elements that are
/// closed in their order, keys and values in turn, and numbers in their places.
[[nodiscard]] Ref<CFObject> ReadXmlPropertyList(std::string_view text);

} // namespace kqu

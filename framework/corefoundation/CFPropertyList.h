#pragma once

#include "framework/corefoundation/CFData.h"
#include "framework/corefoundation/CFObject.h"

namespace kqu {

/// The property list in XML or binary form in these bytes; nil if they are no property list or a
/// broken one, as a whole. Nothing is fetched, no entity is expanded beyond the five of XML.
[[nodiscard]] Ref<CFObject> CFPropertyListParse(const CFData& data);

} // namespace kqu

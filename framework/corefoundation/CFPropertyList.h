#pragma once

#include "framework/corefoundation/CFData.h"
#include "framework/corefoundation/CFObject.h"

namespace kqu {

/// Containers in one another; a list with more is none.
inline constexpr int deepestList = 200;

/// The property list in these bytes, in its XML form; nil if they are none or a broken one, as a
/// whole, and if they are of the binary form. Nothing is fetched, no entity is expanded beyond the
/// five of XML, and a document type with declarations of its own is refused.
[[nodiscard]] Ref<CFObject> CFPropertyListParse(const CFData& data);

} // namespace kqu

#pragma once

#include <string_view>

namespace kqu {

/// Whether an XML text is one whole property list: known elements that are closed in their order,
/// keys and values in turn, numbers in their places, nothing of substance behind it, no entity
/// declared, and all of it of bounded size and depth.
[[nodiscard]] bool IsWholeXmlList(std::string_view text);

} // namespace kqu

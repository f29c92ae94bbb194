#pragma once

#include <string_view>

namespace kqu {

// What the property list library takes on trust is looked at before it is asked: it reads what it
// can of a list that is cut off, and follows lists of any depth.

[[nodiscard]] bool IsBinaryPropertyList(std::string_view bytes);

/// Whether the bytes may be handed to the library: a binary list, or XML whose elements are closed
/// in their order, up to a depth that no preference file has, with nothing of substance behind them
/// and no entity declared.
[[nodiscard]] bool HasPropertyListForm(std::string_view bytes);

} // namespace kqu

#pragma once

#include <cstdint>

// What the property list library takes on trust is looked at before it is asked: it reads what it
// can of a broken list, copies a shared value each time it is mentioned, follows any depth on the
// stack, and needs the square of a list's length in time. What is larger than a preference file
// ever is counts as broken.

namespace kqu {

/// Values in a list, written out in full.
inline constexpr int mostListValues = 50'000;
/// Containers in one another.
inline constexpr int deepestList = 200;
/// Bytes of text that are copied or moved on the way.
inline constexpr std::uint64_t mostListWork = std::uint64_t{1} << 28U;

} // namespace kqu

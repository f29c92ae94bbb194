#pragma once

#include <cstdint>

namespace kqu {

// From doubles to integers: the fraction is dropped, what is out of range saturates, and
// not-a-number is 0. The one way of conversion; a bare cast is undefined beyond the range.
[[nodiscard]] std::int32_t ToInt32(double value);
[[nodiscard]] std::uint32_t ToUInt32(double value);

} // namespace kqu

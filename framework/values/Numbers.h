#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

// The one place where a double becomes an integer: a bare cast is undefined out of range.

namespace kqu {

/// Drops the fraction. Out of range it gives the nearest end of the range, for not-a-number 0.
template <class Integer>
[[nodiscard]] inline Integer Truncated(double value) {
    static_assert(sizeof(Integer) <= sizeof(std::int32_t), "a double must hold the ends exactly");
    constexpr Integer least = std::numeric_limits<Integer>::min();
    constexpr Integer greatest = std::numeric_limits<Integer>::max();
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(least))
        return least;
    if (value >= static_cast<double>(greatest))
        return greatest;
    return static_cast<Integer>(value);
}

[[nodiscard]] inline std::int32_t ToInt32(double value) {
    return Truncated<std::int32_t>(value);
}
[[nodiscard]] inline std::uint32_t ToUInt32(double value) {
    return Truncated<std::uint32_t>(value);
}
[[nodiscard]] inline int ToInt(double value) {
    return Truncated<int>(value);
}

} // namespace kqu

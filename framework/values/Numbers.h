#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace kqu {

/// A double as an integer: the fraction is dropped, what is out of range saturates, and
/// not-a-number is 0. The one way of conversion; a bare cast is undefined beyond the range.
template <class Integer>
[[nodiscard]] Integer Saturated(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(value);
}

[[nodiscard]] inline std::int32_t ToInt32(double value) {
    return Saturated<std::int32_t>(value);
}
[[nodiscard]] inline std::uint32_t ToUInt32(double value) {
    return Saturated<std::uint32_t>(value);
}

} // namespace kqu

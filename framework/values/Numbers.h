#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace kqu {

/// A double as an integer: the fraction is dropped, what is out of range saturates, and
/// not-a-number is 0. The one way of conversion; a bare cast is undefined beyond the range.
[[nodiscard]] inline std::int32_t ToInt32(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<std::int32_t>(value);
}

} // namespace kqu

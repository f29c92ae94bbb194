#include "framework/values/Numbers.h"

#include <cmath>
#include <limits>

namespace kqu {

namespace {
template <class Integer>
Integer Saturated(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(value);
}
} // namespace

std::int32_t ToInt32(double value) {
    return Saturated<std::int32_t>(value);
}

std::uint32_t ToUInt32(double value) {
    return Saturated<std::uint32_t>(value);
}

} // namespace kqu

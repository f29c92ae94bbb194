#include "framework/values/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kqu {

namespace {
void AddOne(std::string& digits) {
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        if (*digit != '9') {
            ++*digit;
            return;
        }
        *digit = '0';
    }
    digits.insert(digits.begin(), '1');
}

/// The digits of a number with so many places behind the point, ties away from zero. They are those
/// of its shortest text, so that ties are those that a reader sees: 0.125 is one, whatever its
/// double.
std::string RoundedDigits(double magnitude, std::size_t places) {
    std::array<char, 512> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude,
                                      std::chars_format::fixed);
    std::string digits(buffer.data(), result.ptr);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    digits.erase(point, 1);
    const std::size_t kept = point + places;
    const bool up = digits.size() > kept && digits[kept] >= '5';
    digits.resize(kept, '0');
    if (up)
        AddOne(digits);
    return digits;
}
} // namespace

std::string Format(double number, std::string_view mask) {
    if (std::isnan(number))
        return "nan";
    if (std::isinf(number))
        return number > 0 ? "inf" : "-inf";
    const std::size_t point = std::min(mask.find('.'), mask.size());
    const std::size_t places = mask.size() - std::min(point + 1, mask.size());
    const std::string digits = RoundedDigits(std::fabs(number), places);
    const bool isZero = digits.find_first_not_of('0') == std::string::npos;

    std::string whole = digits.substr(0, digits.size() - places);
    whole.erase(0, whole.find_first_not_of('0'));
    const std::string_view wholeMask = mask.substr(0, point);
    const auto least =
        static_cast<std::size_t>(std::count(wholeMask.begin(), wholeMask.end(), '0'));
    if (whole.size() < least)
        whole.insert(0, least - whole.size(), '0');
    const std::string fraction = places == 0 ? "" : "." + digits.substr(digits.size() - places);
    return (number < 0 && !isZero ? "-" : "") + whole + fraction;
}

} // namespace kqu

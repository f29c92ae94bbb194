#include "framework/values/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kqu {

namespace {
/// A decimal without sign: digits before and behind the point.
struct Decimal {
    std::string whole;
    std::string fraction;
};

/// The exact decimal of what the shortest text of the number says, so that ties are those that a
/// reader sees: 0.125 is one, whatever its double.
Decimal ShortestDecimal(double magnitude) {
    std::array<char, 512> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude,
                                      std::chars_format::fixed);
    const std::string text(buffer.data(), result.ptr);
    const std::size_t point = text.find('.');
    if (point == std::string::npos)
        return {text, {}};
    return {text.substr(0, point), text.substr(point + 1)};
}

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

/// Rounds to that many digits behind the point, ties away from zero.
void Round(Decimal& decimal, std::size_t places) {
    const bool up = decimal.fraction.size() > places && decimal.fraction[places] >= '5';
    decimal.fraction.resize(places, '0');
    if (!up)
        return;
    std::string digits = decimal.whole + decimal.fraction;
    AddOne(digits);
    decimal.whole = digits.substr(0, digits.size() - places);
    decimal.fraction = digits.substr(digits.size() - places);
}

bool IsZero(const Decimal& decimal) {
    const auto onlyZeros = [](const std::string& digits) {
        return digits.find_first_not_of('0') == std::string::npos;
    };
    return onlyZeros(decimal.whole) && onlyZeros(decimal.fraction);
}
} // namespace

std::string Format(double number, std::string_view mask) {
    if (std::isnan(number))
        return "nan";
    if (std::isinf(number))
        return number > 0 ? "inf" : "-inf";
    const std::size_t point = mask.find('.');
    const std::string_view wholeMask = mask.substr(0, point);
    const std::string_view fractionMask =
        point == std::string_view::npos ? std::string_view() : mask.substr(point + 1);

    Decimal decimal = ShortestDecimal(std::fabs(number));
    Round(decimal, fractionMask.size());
    const std::string sign = number < 0 && !IsZero(decimal) ? "-" : "";
    const auto leastWhole =
        static_cast<std::size_t>(std::count(wholeMask.begin(), wholeMask.end(), '0'));
    const auto leastFraction =
        static_cast<std::size_t>(std::count(fractionMask.begin(), fractionMask.end(), '0'));
    decimal.whole.erase(0, decimal.whole.find_first_not_of('0'));
    if (decimal.whole.size() < leastWhole)
        decimal.whole.insert(0, leastWhole - decimal.whole.size(), '0');
    while (decimal.fraction.size() > leastFraction && decimal.fraction.back() == '0')
        decimal.fraction.pop_back();
    return sign + decimal.whole + (decimal.fraction.empty() ? "" : "." + decimal.fraction);
}

} // namespace kqu

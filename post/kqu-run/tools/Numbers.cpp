#include "post/kqu-run/tools/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace kqu::run {

namespace {
constexpr double decimal = 1000;
constexpr double binary = 1024;
constexpr int longestFraction = 3;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsMark(char c) {
    return c == '.' || c == ',';
}

/// A number whose last mark, if at most three digits follow it, is its decimal mark.
std::optional<double> Decimal(std::string_view text) {
    const std::size_t mark = text.find_last_of(".,");
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDigit(text[i]))
            plain += text[i];
        else if (i == mark && text.size() - mark - 1 <= longestFraction)
            plain += '.';
    }
    double value = 0;
    const auto read = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    return read.ec == std::errc() ? std::optional(value) : std::nullopt;
}

std::size_t NumberLength(std::string_view text) {
    const auto* const end =
        std::find_if_not(text.begin(), text.end(), [](char c) { return IsDigit(c) || IsMark(c); });
    return static_cast<std::size_t>(end - text.begin());
}

double Power(double base, std::size_t exponent) {
    double power = 1;
    for (; exponent > 0; --exponent)
        power *= base;
    return power;
}
} // namespace

std::optional<double> LastPercentage(std::string_view text) {
    std::size_t sign = text.rfind('%');
    if (sign == std::string_view::npos)
        return std::nullopt;
    while (sign > 0 && text[sign - 1] == ' ')
        --sign;
    std::size_t begin = sign;
    while (begin > 0 && (IsDigit(text[begin - 1]) || IsMark(text[begin - 1])))
        --begin;
    const auto value = Decimal(text.substr(begin, sign - begin));
    constexpr double whole = 100;
    return value ? std::optional(*value / whole) : std::nullopt;
}

std::optional<std::uint64_t> TakeNumber(std::string_view& text) {
    std::uint64_t value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    return value;
}

bool TakeMark(std::string_view& text, std::string_view mark) {
    if (!text.starts_with(mark))
        return false;
    text.remove_prefix(mark.size());
    return true;
}

std::optional<double> Amount(std::string_view text) {
    const std::size_t length = NumberLength(text);
    const auto value = Decimal(text.substr(0, length));
    text.remove_prefix(length);
    const bool hasBlank = TakeMark(text, " ");
    constexpr std::string_view units = "kMGTPE";
    const std::size_t unit = text.empty() ? std::string_view::npos
                                          : units.find(text.front() == 'K' ? 'k' : text.front());
    if (!value || (!hasBlank && text.empty()))
        return std::nullopt;
    if (unit == std::string_view::npos)
        return text.starts_with('B') ? value : std::nullopt;
    return *value * Power(text.substr(1).starts_with('i') ? binary : decimal, unit + 1);
}

std::optional<std::uint64_t> DdSize(std::string_view text) {
    std::uint64_t product = 1;
    do {
        const auto value = TakeNumber(text);
        if (!value)
            return std::nullopt;
        product *= *value;
        constexpr std::string_view units = "kMGTP";
        if (TakeMark(text, "c") || text.empty() || text == "B" || text.front() == 'x')
            continue;
        const char letter = text.front() == 'K' ? 'k' : text.front();
        text.remove_prefix(1);
        const std::size_t unit = units.find(letter);
        if (letter == 'w' || letter == 'b')
            product *= letter == 'w' ? 2 : 512;
        else if (unit == std::string_view::npos)
            return std::nullopt;
        else if (TakeMark(text, "iB") || !TakeMark(text, "B"))
            product *= static_cast<std::uint64_t>(Power(binary, unit + 1));
        else
            product *= static_cast<std::uint64_t>(Power(decimal, unit + 1));
    } while (TakeMark(text, "x"));
    return text.empty() || text == "B" ? std::optional(product) : std::nullopt;
}

std::optional<double> Share(double part, double whole) {
    return whole > 0 ? std::optional(std::clamp(part / whole, 0.0, 1.0)) : std::nullopt;
}

} // namespace kqu::run

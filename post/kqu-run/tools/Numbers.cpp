#include "post/kqu-run/tools/Numbers.h"

#include "post/posting/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kqu::run {

namespace {
/// A number whose last mark, if at most three digits follow it, is its decimal mark.
std::optional<double> Decimal(std::string_view text) {
    const std::size_t mark = text.find_last_of(".,");
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] >= '0' && text[i] <= '9')
            plain += text[i];
        else if (i == mark && text.size() - mark - 1 <= 3)
            plain += '.';
    }
    double value = 0;
    const auto read = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    return read.ec == std::errc() ? std::optional(value) : std::nullopt;
}

/// What "k", "M" and so on multiply by; 1 without a letter.
double Unit(std::string_view letter, bool isBinary) {
    constexpr std::string_view units = "kMGTPE";
    if (letter.empty())
        return 1;
    const std::size_t unit = units.find(letter == "K" ? "k" : letter);
    return std::pow(isBinary ? 1024 : 1000, unit + 1);
}
} // namespace

std::optional<double> LastPercentage(std::string_view text) {
    const std::size_t sign = text.rfind('%');
    if (sign == std::string_view::npos)
        return std::nullopt;
    text = text.substr(0, text.find_last_not_of(' ', sign - 1) + 1);
    const auto value = Decimal(text.substr(text.find_last_not_of("0123456789.,") + 1));
    return value ? std::optional(*value / 100) : std::nullopt;
}

double Count(std::string_view text) {
    double count = 0;
    for (const char c : text)
        if (c >= '0' && c <= '9')
            count = 10 * count + (c - '0');
    return count;
}

std::optional<double> Amount(std::string_view text) {
    static const post::Pattern amount("^([0-9.,]+) ?([kKMGTPE]?)(i?)B");
    const auto parts = amount.In(text);
    const auto value = parts.empty() ? std::nullopt : Decimal(parts[1]);
    return value ? std::optional(*value * Unit(parts[2], !parts[3].empty())) : std::nullopt;
}

std::optional<std::uint64_t> DdSize(std::string_view text) {
    static const post::Pattern factor("^([0-9]+)(([kKMGTP])((iB)|B)?|[cwbB]?)(x|$)");
    std::uint64_t product = 1;
    do {
        const auto parts = factor.In(text);
        std::uint64_t value = 0;
        if (parts.empty() ||
            std::from_chars(parts[1].begin(), parts[1].end(), value).ec != std::errc())
            return std::nullopt;
        const bool isBinary = parts[4].empty() || !parts[5].empty();
        product *= value * static_cast<std::uint64_t>(Unit(parts[3], isBinary));
        product *= parts[2] == "w" ? 2U : parts[2] == "b" ? 512U : 1U;
        text.remove_prefix(parts[0].size());
    } while (!text.empty());
    return product;
}

std::optional<double> Share(double part, double whole) {
    return whole > 0 ? std::optional(std::clamp(part / whole, 0.0, 1.0)) : std::nullopt;
}

} // namespace kqu::run

#include "tests/oracle/Rules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace kqu::oracle {

namespace {
/// In small letters, byte by byte: none of these letters changes its length.
std::string Small(std::string text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (byte(i) >= 'A' && byte(i) <= 'Z')
            text[i] = static_cast<char>(byte(i) + 32);
        if (i + 1 == text.size())
            break;
        const unsigned first = byte(i), second = byte(i + 1);
        const bool isLatin = first == 0xC3 && second >= 0x80 && second <= 0x9E && second != 0x97;
        const bool isGreek = first == 0xCE && second >= 0x91 && second <= 0x9F;
        const bool isCyrillic = first == 0xD0 && second >= 0x90 && second <= 0x9F;
        if (isLatin || isGreek || isCyrillic)
            text[++i] = static_cast<char>(second + 32);
        else if (first == 0xD0 && second >= 0xA0 && second <= 0xAF) {
            text[i] = '\xD1';
            text[++i] = static_cast<char>(second - 32);
        }
    }
    return text;
}
} // namespace

double Val(const std::string& text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const std::size_t end = text.find_first_not_of("0123456789+-.eE", start);
    return std::strtod(text.substr(start, end - start).c_str(), nullptr);
}

std::int32_t Whole(double number) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    if (std::isnan(number))
        return 0;
    return number <= least  ? least
           : number >= most ? most
                            : static_cast<std::int32_t>(std::trunc(number));
}

std::string Rounded(double number, std::size_t decimals) {
    // What is rounded is the shortest text that reads back as the number, as a reader sees it.
    std::array<char, 500> shortest{};
    int places = 0;
    do
        std::snprintf(shortest.data(), shortest.size(), "%.*f", places++, std::fabs(number));
    while (std::strtod(shortest.data(), nullptr) != std::fabs(number));
    const std::string whole = Field(shortest.data(), ".", 1);
    const std::string fraction = Field(shortest.data(), ".", 2) + std::string(decimals + 1, '0');
    std::string digits = "0" + whole + fraction.substr(0, decimals);
    if (fraction[decimals] >= '5') {
        std::size_t last = digits.size() - 1;
        for (; digits[last] == '9'; --last)
            digits[last] = '0';
        ++digits[last];
    }
    const std::size_t firstDigit = digits.find_first_not_of('0');
    if (firstDigit == std::string::npos)
        return decimals == 0 ? "" : "0." + std::string(decimals, '0');
    digits.erase(0, std::min(firstDigit, digits.size() - decimals - (decimals > 0 ? 1 : 0)));
    if (decimals > 0)
        digits.insert(digits.size() - decimals, ".");
    return (number < 0 ? "-" : "") + digits;
}

std::size_t Place(const std::string& text, const std::string& part) {
    return text.empty() ? 0 : Small(text).find(Small(part)) + 1;
}

bool Same(const std::string& a, const std::string& b) {
    return Small(a) == Small(b);
}

Texts Fields(const std::string& text, const std::string& separator) {
    Texts fields;
    const std::string small = Small(text), part = Small(separator);
    std::size_t start = 0, end = 0;
    while (!part.empty() && (end = small.find(part, start)) != std::string::npos) {
        fields.push_back(text.substr(start, end - start));
        start = end + part.size();
    }
    if (!text.empty())
        fields.push_back(text.substr(start));
    return fields;
}

std::string Field(const std::string& text, const std::string& separator, std::size_t number) {
    const Texts fields = Fields(text, separator);
    return number >= 1 && number <= fields.size() ? fields[number - 1] : "";
}

std::string Replaced(const std::string& text, const std::string& part, const std::string& by) {
    std::string result;
    for (const std::string& field : Fields(text, part))
        result += field + by;
    return text.empty() ? "" : result.substr(0, result.size() - by.size());
}

} // namespace kqu::oracle

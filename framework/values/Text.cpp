#include "framework/values/Text.h"

#include "framework/values/CaseFolding.h"

#include <glib.h>

#include <algorithm>
#include <optional>

namespace kqu {

namespace {
struct Occurrence {
    std::size_t position;
    std::size_t length;
};

/// How many bytes of `text` the start of it takes that equals `find`; nothing if it doesn't.
/// Folding goes character by character, so that lengths are always those of the original.
std::optional<std::size_t> MatchAtStart(std::string_view text, std::string_view find) {
    const std::size_t whole = text.size();
    while (!find.empty()) {
        if (text.empty())
            return std::nullopt;
        std::size_t textLength = 0;
        std::size_t findLength = 0;
        if (FoldedCharacter(text, textLength) != FoldedCharacter(find, findLength))
            return std::nullopt;
        text.remove_prefix(textLength);
        find.remove_prefix(findLength);
    }
    return whole - text.size();
}

/// Whether the byte is a character that no other one equals: ASCII, and no letter.
bool EqualsOnlyItself(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 && (byte < 'A' || byte > 'Z') && (byte < 'a' || byte > 'z');
}

std::optional<Occurrence> FindFrom(std::string_view text, std::string_view find,
                                   std::size_t start) {
    if (find.empty())
        return std::nullopt;
    const bool mayLeap = EqualsOnlyItself(find.front());
    std::size_t position = start;
    while (position < text.size()) {
        if (mayLeap)
            position = text.find(find.front(), position);
        if (position == std::string_view::npos)
            break;
        const std::string_view rest = text.substr(position);
        if (const auto length = MatchAtStart(rest, find))
            return Occurrence{position, *length};
        std::size_t step = 1;
        static_cast<void>(FoldedCharacter(rest, step));
        position += step;
    }
    return std::nullopt;
}
} // namespace

double Val(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    // Cut where words and hexadecimal digits begin, which the library would read as numbers too.
    const std::string number(text.substr(0, text.find_first_not_of("0123456789.eE+-")));
    return g_ascii_strtod(number.c_str(), nullptr);
}

int InStr(std::string_view text, std::string_view find) {
    if (find.empty())
        return text.empty() ? 0 : 1;
    const auto found = FindFrom(text, find, 0);
    return found ? static_cast<int>(found->position) + 1 : 0;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    if (a == b)
        return true;
    const auto match = MatchAtStart(a, b);
    return match && *match == a.size();
}

std::string ReplaceAll(std::string_view text, std::string_view find, std::string_view replacement) {
    std::string result;
    std::size_t position = 0;
    while (const auto found = FindFrom(text, find, position)) {
        result += text.substr(position, found->position - position);
        result += replacement;
        position = found->position + found->length;
    }
    return result += text.substr(position);
}

std::string NthField(std::string_view text, std::string_view separator, int number) {
    std::size_t start = 0;
    for (int field = 1;; ++field) {
        const auto end = FindFrom(text, separator, start);
        if (field == number)
            return std::string(
                text.substr(start, end ? end->position - start : std::string_view::npos));
        if (!end || number < 1)
            return {};
        start = end->position + end->length;
    }
}

int CountFields(std::string_view text, std::string_view separator) {
    if (text.empty())
        return 0;
    int count = 1;
    for (auto found = FindFrom(text, separator, 0); found;
         found = FindFrom(text, separator, found->position + found->length))
        ++count;
    return count;
}

} // namespace kqu

#include "platform/volumes/MountTable.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

namespace kqu::platform {

namespace {
std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0)
            parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

bool IsOctal(char c) {
    return c >= '0' && c <= '7';
}

/// Blanks and the like are written as a backslash and three octal digits.
std::string WithoutEscapes(std::string_view text) {
    constexpr std::size_t escapeLength = 4;
    std::string plain;
    while (!text.empty()) {
        std::size_t used = 1;
        if (text.size() >= escapeLength && text[0] == '\\' && text[1] <= '3' &&
            std::all_of(text.begin() + 1, text.begin() + escapeLength, IsOctal)) {
            plain += static_cast<char>((text[1] - '0') * 64 + (text[2] - '0') * 8 + text[3] - '0');
            used = escapeLength;
        } else {
            plain += text[0];
        }
        text.remove_prefix(used);
    }
    return plain;
}

/// Number, parent, device, root, mount point, options, any number of optional fields, a dash, type,
/// source, options of the file system.
std::optional<Mount> ParseLine(std::string_view line) {
    constexpr std::ptrdiff_t device = 2;
    constexpr std::ptrdiff_t mountPoint = 4;
    constexpr std::ptrdiff_t firstOptional = 6;
    constexpr std::ptrdiff_t sourceBehindDash = 2;
    const auto fields = Split(line, ' ');
    if (std::ssize(fields) <= firstOptional)
        return std::nullopt;
    const auto dash = std::find(fields.begin() + firstOptional, fields.end(), "-");
    if (fields.end() - dash <= sourceBehindDash)
        return std::nullopt;
    return Mount{std::string(*(fields.begin() + device)),
                 WithoutEscapes(*(fields.begin() + mountPoint)),
                 WithoutEscapes(*(dash + sourceBehindDash))};
}
} // namespace

std::vector<Mount> ParseMountTable(std::string_view mountInfo) {
    std::vector<Mount> mounts;
    for (const std::string_view line : Split(mountInfo, '\n'))
        if (auto mount = ParseLine(line))
            mounts.push_back(std::move(*mount));
    return mounts;
}

} // namespace kqu::platform

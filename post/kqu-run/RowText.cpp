#include "post/kqu-run/RowText.h"

#include "post/posting/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace kqu::run {

namespace {
constexpr const char* nameMark = "KQS_disk";

/// The length of the character that the text begins with; 0 if it is none.
std::size_t CharacterLength(std::string_view text) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length)
        if (post::IsUtf8(text.substr(0, length)))
            return length;
    return 0;
}

/// Control characters, and marks that turn the direction of the text around them or break the line:
/// U+061C, U+200E, U+200F, U+2028 to U+202E, U+2066 to U+2069 (Unicode Standard Annex 9, section
/// 2).
bool IsControl(std::string_view character) {
    static const post::Pattern controls(
        "^([\x01-\x1F\x7F]|\xC2[\x80-\x9F]|\xD8\x9C|\xE2\x80[\x8E\x8F\xA8-\xAE]|"
        "\xE2\x81[\xA6-\xA9])$");
    return character.front() == '\0' || !controls.In(character).empty();
}

/// A share of a whole as a number with so many decimals; empty if it isn't known.
std::string Of(double whole, const std::optional<double>& share, int decimals) {
    std::array<char, 48> text{};
    if (share && std::isfinite(*share))
        std::snprintf(text.data(), text.size(), "%.*f", decimals,
                      std::clamp(*share, 0.0, 1.0) * whole);
    return text.data();
}
} // namespace

const std::string& Shown(const Progress& progress, const Row& row) {
    return row.showsFiles && !progress.file.empty() ? progress.file : progress.text;
}

std::string CleanText(std::string_view text) {
    std::string clean;
    while (!text.empty() && clean.size() < 512) {
        const bool isPlain = text.front() >= ' ' && text.front() <= '~';
        const std::size_t length = isPlain ? 1 : CharacterLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0)
            clean += '?';
        else if (!isPlain && IsControl(character))
            clean += ' ';
        else
            clean += character;
        text.remove_prefix(character.size());
    }
    return clean;
}

std::string TaskName(std::string_view name) {
    const std::string clean = CleanText(name);
    return strcasestr(clean.c_str(), nameMark) != nullptr ? clean
                                                          : std::string(nameMark) + "." + clean;
}

post::Notification MakeNotification(const std::string& name, const Row& row,
                                    const Progress& progress, pid_t tool,
                                    const std::string& after) {
    const bool isDefragmenter = row.tool->name == "defragmenter";
    const std::string& text = Shown(progress, row);
    const std::string doing = progress.checking ? "check" : "defrag";
    std::vector<std::pair<std::string, std::string>> values{
        {"PID", std::to_string(tool)},
        {"Extra", after},
        {"BSD", row.disk},
        {"Progress", Of(1000, progress.share, 2)},
        {"VolName", row.Shown(row.volume)},
        {"dVolName", row.Shown(row.destination)},
        {"Item", text},
        {"ScanType", row.sectors ? "1" : ""},
        {"FolderBackup", row.folder ? "1" : ""},
        {"Type", row.image ? "4" : ""},
        {"status", isDefragmenter ? doing : text},
        {"FileName", text},
        {"FileProgress", Of(100, progress.fileShare, 0)},
        {"NumFilesExamined", Of(static_cast<double>(row.filesInUse), progress.share, 0)}};
    std::erase_if(values, [&](const auto& value) {
        return value.second.empty() || !post::HasKey(*row.tool, value.first);
    });
    for (auto& [key, value] : values)
        value = CleanText(value);
    return {row.tool, name, values};
}

} // namespace kqu::run

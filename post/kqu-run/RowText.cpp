#include "post/kqu-run/RowText.h"

#include "post/posting/Pattern.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace kqu::run {

namespace {
constexpr std::size_t longestText = 512;
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

std::string Number(double value, int decimals) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

double Bounded(double share) {
    return std::isfinite(share) ? std::clamp(share, 0.0, 1.0) : 0.0;
}

class Values {
  public:
    void Add(const char* key, std::string_view text) {
        if (!text.empty())
            values_.emplace_back(key, CleanText(text));
    }
    void AddShare(const char* key, const std::optional<double>& share, double whole, int decimals) {
        if (share)
            values_.emplace_back(key, Number(Bounded(*share) * whole, decimals));
    }
    std::vector<std::pair<std::string, std::string>> Take() { return std::move(values_); }

  private:
    std::vector<std::pair<std::string, std::string>> values_;
};

const std::string& Shown(const Name& name, const Row& row) {
    return row.showsFiles ? name.full : name.open;
}

void AddScanner(Values& values, const Row& row, const Progress& progress) {
    values.AddShare("Progress", progress.share, 1000, 2);
    values.Add("VolName", Shown(row.volume, row));
    values.Add("Item", Shown(progress, row));
    values.Add("ScanType", row.sectors ? "1" : "");
}

void AddBackup(Values& values, const Row& row, const Progress& progress) {
    values.AddShare("Progress", progress.share, 1000, 2);
    values.Add("VolName", Shown(row.volume, row));
    values.Add("dVolName", Shown(row.destination, row));
    values.Add("status", Shown(progress, row));
    values.Add("FolderBackup", row.folder ? "1" : "");
    values.Add("Type", row.image ? "4" : "");
}

void AddDefragmenter(Values& values, const Row& row, const Progress& progress) {
    values.Add("status", progress.checking ? "check" : "defrag");
    values.Add("FileName", Shown(progress, row));
    values.AddShare("FileProgress", progress.fileShare, 100, 0);
    values.AddShare("NumFilesExamined", progress.share, static_cast<double>(row.filesInUse), 0);
}
} // namespace

const std::string& Shown(const Progress& progress, const Row& row) {
    return row.showsFiles && !progress.file.empty() ? progress.file : progress.text;
}

std::string CleanText(std::string_view text) {
    std::string clean;
    while (!text.empty() && clean.size() < longestText) {
        const std::size_t length = CharacterLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0)
            clean += '?';
        else if (IsControl(character))
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
    Values values;
    values.Add("PID", std::to_string(tool));
    values.Add("Extra", after);
    values.Add("BSD", row.disk);
    if (row.tool->name == "scanner")
        AddScanner(values, row, progress);
    else if (row.tool->name == "backup")
        AddBackup(values, row, progress);
    else
        AddDefragmenter(values, row, progress);
    return {row.tool, name, values.Take()};
}

} // namespace kqu::run

#include "tests/lives/ExpectedRow.h"

#include "tests/lives/Wire.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace kqu::lives {

namespace {
using platform::WireDictionary;

enum class How { First, Last, Number, Upward, Presence, Destination };
struct Rule {
    const char* rowKey;
    const char* wireKey;
    How how;
};
const std::vector<Rule> scannerRules{{"progress", "Progress", How::Upward},
                                     {"extra", "Extra", How::First},
                                     {"status", "Item", How::Last},
                                     {"pid", "PID", How::Number},
                                     {"type", "ScanType", How::Last},
                                     {"volume", "VolName", How::First},
                                     {"bsd", "BSD", How::First}};
const std::vector<Rule> backupRules{{"progress", "Progress", How::Number},
                                    {"extra", "Extra", How::First},
                                    {"status", "status", How::Last},
                                    {"pid", "PID", How::Number},
                                    {"type", "Type", How::Number},
                                    {"volume", "VolName", How::First},
                                    {"bsd", "BSD", How::First},
                                    {"folderbackup", "FolderBackup", How::Presence},
                                    {"destination", "dVolName", How::Destination}};
const std::vector<Rule> defragRules{{"pid", "PID", How::Number}, {"extra", "Extra", How::First}};

bool IsSent(const WireDictionary& sent, const std::string& key) {
    return std::any_of(sent.begin(), sent.end(),
                       [&](const auto& entry) { return entry.first == key; });
}

std::optional<std::string> Text(const WireDictionary& sent, const std::string& key) {
    for (const auto& [sentKey, value] : sent)
        if (sentKey == key) {
            if (const auto* text = std::get_if<std::string>(&value))
                return *text;
            throw Ends{"the value of " + key + " is no text"};
        }
    return std::nullopt;
}

void Raise(Row& row, double progress) {
    if (!row.contains("progress") || std::get<double>(row["progress"]) < progress)
        row["progress"] = progress;
}

std::string SingleSlashes(const std::string& path) {
    std::string single;
    for (std::size_t i = 0; i < path.size(); ++i) {
        single += path[i];
        if (path.compare(i, 2, "//") == 0)
            ++i;
    }
    return single;
}

void Apply(const Rule& rule, Row& row, const WireDictionary& sent) {
    const bool isFirstOnly = rule.how == How::First || rule.how == How::Destination;
    if (!IsSent(sent, rule.wireKey) || (isFirstOnly && row.contains(rule.rowKey)))
        return;
    // The one value that nobody reads.
    const std::string text = rule.how == How::Presence ? "" : *Text(sent, rule.wireKey);
    switch (rule.how) {
    case How::First:
    case How::Last:
        row[rule.rowKey] = text;
        break;
    case How::Number:
        row[rule.rowKey] = NumberIn(text);
        break;
    case How::Upward:
        Raise(row, NumberIn(text));
        break;
    case How::Presence:
        row[rule.rowKey] = 1.0;
        break;
    case How::Destination:
        row[rule.rowKey] = SingleSlashes(text);
        break;
    }
}

std::string Phase(const WireDictionary& sent) {
    const std::string status = Folded(Text(sent, "status").value_or(""));
    if (status.find("check") != std::string::npos || status.find("defrag") == std::string::npos)
        return "Checking File Fragmentation...";
    const double percent = NumberIn(Text(sent, "FileProgress").value_or("1000"));
    if (percent >= 100.0)
        return "Checking File Fragmentation...";
    const long shown = std::lround(std::max(percent, 0.0));
    const std::string digits = shown > 0 ? std::to_string(shown) : percent > 0.0 ? "" : "0";
    return "Defragging Fork: " + digits + " % Complete";
}

void ResolveVolume(Row& row, const std::string& disk, const World& world) {
    row["bsd"] = row["volume"] = disk;
    if (world.lookUpFile && Folded(disk) == "sda1") {
        row["volume"] = "Looked Up";
        row["totalfiles"] = 400.0;
        return;
    }
    if (!world.Has<functions::MountedVolumes>())
        return;
    for (std::size_t i = 0; i < World::disks.size(); ++i) {
        if ((world.mounted >> i & 1) == 0)
            continue;
        world.Need<functions::FSCopyDiskIDForVolume>();
        std::string found;
        if (!world.diskNameFails) {
            world.Need<functions::CFStringGetCStringOfCarbon>();
            world.Need<functions::CFRelease>();
            found = World::disks[i].disk;
        }
        if (found != Folded(disk))
            continue;
        row["volume"] = World::disks[i].name;
        world.Need<functions::FSGetVolumeInfo>();
        row["totalfiles"] = world.volumeInfoFails ? 0.0 : World::filesOnVolume;
        return;
    }
}

void TakeInDefragmenter(Row& row, const WireDictionary& sent, const World& world) {
    row["fileprogress"] = Phase(sent);
    if (const auto file = Text(sent, "FileName"))
        row["status"] = "File: " + *file;
    for (const Rule& rule : defragRules)
        Apply(rule, row, sent);
    const double examined = NumberIn(Text(sent, "NumFilesExamined").value_or("0"));
    if (!row.contains("volume") && IsSent(sent, "BSD"))
        ResolveVolume(row, *Text(sent, "BSD"), world);
    if (row.contains("totalfiles"))
        Raise(row, examined * 1000.0 / std::get<double>(row["totalfiles"]));
}
} // namespace

void TakeIn(Row& row, const std::string& tool, const WireDictionary& sent, const World& world) {
    if (tool == "kqdefrag") {
        row["task"] = 2.0;
        TakeInDefragmenter(row, sent, world);
    } else if (tool == "kqms" || tool == "kqbackup") {
        row["task"] = tool == "kqms" ? 1.0 : 6.0;
        for (const Rule& rule : tool == "kqms" ? scannerRules : backupRules)
            Apply(rule, row, sent);
    }
}

std::int32_t Whole(double number) {
    return static_cast<std::int32_t>(std::clamp(number, -2147483648.0, 2147483647.0));
}

} // namespace kqu::lives

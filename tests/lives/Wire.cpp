#include "tests/lives/Wire.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <map>
#include <vector>

namespace kqu::lives {

namespace {
using platform::OtherWireValue;
using platform::WireDictionary;
using platform::WireValue;

const std::map<std::string, double> oddNumbers{
    {"999.96", 999.96}, {"-10", -10},   {"-1", -1},
    {"abc", 0},         {"", 0},        {" 33.3", 33.3},
    {"12abc", 12},      {"1e3", 1000},  {"1e300", 1e300},
    {"nan", 0},         {"inf", 0},     {"1e999", std::numeric_limits<double>::infinity()},
    {"0x10", 0},        {"+7", 7},      {"4.5.6", 4.5},
    {"-0", 0},          {"1,000", 1},   {"0.3", 0.3},
    {"37.6", 37.6},     {"99.7", 99.7}, {"-1e300", -1e300},
};

const std::vector<std::string> processes{
    "11", "12", "13", "14", "15", "16", "17",   "18",  "19", "20", "11",         "12",   "13",
    "14", "15", "16", "17", "18", "21", "1.75", "abc", "",   "-1", "4294967297", "1e300"};

std::vector<std::string> Numbers() {
    std::vector<std::string> texts{"0", "250", "500", "1000", "1500"};
    for (const auto& [text, number] : oddNumbers)
        texts.push_back(text);
    return texts;
}

struct WireKey {
    std::string key;
    std::vector<std::string> values;
};

/// The last two are of a wrong case, and mean nothing to anybody.
const std::array<WireKey, wireKeyCount> wireKeys{{
    {"PID", processes},
    {"Extra", {"sleep", "shutdown", "Sleep", "", "restart"}},
    {"BSD", {"sda1", "SDB1", "sdc1", "", "disk9", "dm-7"}},
    {"Progress", Numbers()},
    {"VolName", {"Data", "", "Ärger \xF0\x9F\x92\xBE", std::string(300, 'v')}},
    {"Item", {"/srv/a.bin", "", std::string(2000, '/')}},
    {"ScanType", {"0", "1", "", "00"}},
    {"status", {"Defragmenting", "check", "CHECKing the defrag", "", "Copying"}},
    {"Type", {"4", "0", "4.9", "abc"}},
    {"FolderBackup", {"", "no"}},
    {"dVolName", {"/Volumes//Backup", "a///b", "//", "plain"}},
    {"FileName", {"letter.txt", "", "б:у%s"}},
    {"FileProgress", Numbers()},
    {"NumFilesExamined", Numbers()},
    {"pid", {"1"}},
    {"Status", {"x"}},
}};

std::optional<std::string> NameOf(int value) {
    constexpr std::array<const char*, nameForms> forms{"KQS_disk.tÄsk", "kqs_disk.täsk",
                                                       "KQS_DISK.TÄSK"};
    if (value == -1)
        return std::nullopt;
    if (value < 0)
        return "KQS-disk.1";
    return forms.at(static_cast<std::size_t>(value % nameForms)) +
           std::to_string(value / nameForms);
}

std::optional<WireValue> ToolOf(int value) {
    const std::array<std::optional<WireValue>, toolCount> tools{
        "KQMS",    "KQBackup", "KQDefrag", "kqms",           "kQbAcKuP",
        "KQOther", true,       1.0,        OtherWireValue(), std::nullopt};
    return tools.at(static_cast<std::size_t>(value));
}

WireValue NoText(int value) {
    const std::array<WireValue, 3> values{true, 7.0, OtherWireValue()};
    return values.at(static_cast<std::size_t>(value % 3));
}
} // namespace

platform::PostedNotification NotificationOf(const Event& event) {
    const auto& [name, tool, keys, choice] = event.values;
    WireDictionary sent;
    std::uint32_t draw = static_cast<std::uint32_t>(choice);
    for (int i = 0; i < wireKeyCount; ++i) {
        const auto& [key, values] = wireKeys.at(static_cast<std::size_t>(i));
        // With a choice of 0 each key has its first value.
        draw = draw * 1664525U;
        if (keys >> oddKeyShift == i + 1)
            sent.emplace_back(key, NoText(choice));
        else if ((keys >> i & 1) != 0)
            sent.emplace_back(key, values[(draw >> 8U) % values.size()]);
    }
    const bool withoutInfo = tool == toolCount - 1 && choice % 2 != 0;
    return {NameOf(name), ToolOf(withoutInfo ? 0 : tool),
            withoutInfo ? std::nullopt : std::optional(sent)};
}

std::string Folded(const std::string& text) {
    std::string folded;
    for (const char c : text)
        folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (std::size_t at = 0; (at = folded.find("Ä", at)) != std::string::npos;)
        folded.replace(at, std::string("Ä").size(), "ä");
    return folded;
}

double NumberIn(const std::string& text) {
    if (const auto odd = oddNumbers.find(text); odd != oddNumbers.end())
        return odd->second;
    const bool isPlain = std::all_of(text.begin(), text.end(),
                                     [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    return isPlain ? std::stod(text) : 0.0;
}

} // namespace kqu::lives

#include "tests/lives/Wire.h"

namespace kqu::lives {

namespace {
using platform::OtherWireValue;
using platform::WireDictionary;
using platform::WireValue;
using Texts = std::vector<std::string>;

const Texts processes{"11", "12",   "13",  "14", "15", "16",         "17",   "18", "19",
                      "20", "11",   "12",  "13", "14", "15",         "16",   "17", "18",
                      "21", "1.75", "abc", "",   "-1", "4294967297", "1e300"};
const Texts numbers{"0",     "250",    "500",   "1000",   "1500", "999.96", "-10", "-1",
                    "abc",   "",       " 33.3", "12abc",  "1e3",  "1e300",  "nan", "inf",
                    "1e999", "0x10",   "+7",    "4.5.6",  "-0",   "1,000",  "0.3", "37.6",
                    "99.7",  "-1e300", "456",   "999.94", "4.9",  "20000"};

/// The last two are of a wrong case, and mean nothing to anybody.
const std::pair<const char*, Texts> wireKeys[wireKeyCount]{
    {"PID", processes},
    {"Extra", {"sleep", "shutdown", "Sleep", "", "restart"}},
    {"BSD", {"sda1", "SDB1", "sdc1", "", "disk9", "dm-7"}},
    {"Progress", numbers},
    {"VolName",
     {"Data", "", "Ärger \xF0\x9F\x92\xBE", std::string(300, 'v'), "\xFF\r<b>日 &amp;%s"}},
    {"Item", {"/srv/a.bin", "", "\n//\u0394:\xFF", std::string(2000, '/')}},
    {"ScanType", {"0", "1", "", "00"}},
    {"status", {"Defragmenting", "check", "CHECKing the defrag", "", "Copying"}},
    {"Type", {"4", "0", "4.9", "abc"}},
    {"FolderBackup", {"", "no"}},
    {"dVolName", {"/Volumes//Backup", "a///b", "//", "plain"}},
    {"FileName", {"letter.txt", "", "б:у%s"}},
    {"FileProgress", numbers},
    {"NumFilesExamined", numbers},
    {"pid", {"1"}},
    {"Status", {"x"}},
};

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

const std::array<std::optional<WireValue>, toolCount> tools{
    "KQMS",    "KQBackup", "KQDefrag", "kqms",           "kQbAcKuP",
    "KQOther", true,       1.0,        OtherWireValue(), std::nullopt};
const std::array<WireValue, 3> noTexts{true, 7.0, OtherWireValue()};
} // namespace

platform::PostedNotification NotificationOf(const Values& values) {
    const auto& [name, tool, keys, choice] = values;
    WireDictionary sent;
    std::uint32_t draw = static_cast<std::uint32_t>(choice);
    for (int i = 0; i < wireKeyCount; ++i) {
        const auto& [key, texts] = wireKeys[i];
        // With a choice of 0 each key has its first value.
        draw = draw * 1664525U;
        if (keys >> oddKeyShift == i + 1)
            sent.emplace_back(key, noTexts.at(static_cast<std::size_t>(choice) % noTexts.size()));
        else if ((keys >> i & 1) != 0)
            sent.emplace_back(key, texts[(draw >> 8U) % texts.size()]);
    }
    const bool withoutInfo = tool == toolCount - 1 && choice % 2 != 0;
    return {NameOf(name), tools.at(static_cast<std::size_t>(withoutInfo ? 0 : tool)),
            withoutInfo ? std::nullopt : std::optional(sent)};
}

} // namespace kqu::lives

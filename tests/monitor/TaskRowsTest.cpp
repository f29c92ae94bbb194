#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <map>
#include <sstream>

// What notifications make of a row, as literal tables.

namespace kqu {
namespace {

using namespace simulation;
using Lines = std::vector<std::string>;

Lines Split(const std::string& text, char separator) {
    Lines parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

/// "bsd='sda1' pid=12.0 task=1": texts in quotes, doubles with a point, "u" behind what has no
/// sign.
std::string Shown(const Dictionary& row) {
    std::map<std::string, std::string> cells;
    for (int i = 0; i < row.Count(); ++i) {
        std::string key = row.Key(i);
        const Variant value = row.Value(key);
        std::string text = value.StringValue();
        if (value.Kind() == Variant::Type::String)
            text = "'" + text + "'";
        else if (value.Kind() == Variant::Type::Double)
            text = std::isnan(value.DoubleValue())       ? "nan"
                   : text.find('.') == std::string::npos ? text + ".0"
                                                         : text;
        else if (value.Kind() == Variant::Type::UInt32)
            text += "u";
        for (char& c : key)
            c = static_cast<char>(std::tolower(c));
        cells[key] = text;
    }
    std::string shown;
    for (const auto& [key, text] : cells)
        if (key != "progresspict")
            shown += (shown.empty() ? "" : " ") + key + "=" + text;
    return shown;
}

class TaskRows : public testing::Test {
  protected:
    TaskRows() {
        machine.functions.Set<functions::FSGetVolumeInfo>(
            [this](auto, auto, auto, std::uint32_t which, std::byte* info, auto, auto) {
                EXPECT_EQ(which, 0xFFFFU);
                std::memcpy(info + 32, &files, sizeof files);
                return 0;
            });
        machine.Start();
    }
    /// Posts "KQMS;PID=12;Item=a" under a name, and shows its row.
    std::string Post(const std::string& sent, const std::string& name = "KQS_disk.1") {
        WireDictionary info;
        Lines parts = Split(sent, ';');
        for (std::size_t i = 1; i < parts.size(); ++i) {
            const std::size_t equals = parts[i].find('=');
            info.emplace_back(parts[i].substr(0, equals), parts[i].substr(equals + 1));
        }
        machine.centre.Post(PostedNotification{name, parts.at(0), info});
        machine.Advance();
        return Shown(*machine.Row(name));
    }
    /// Each line is posted in turn; the row must then be as the line below it says.
    void ExpectRows(const Lines& course) {
        machine.Panel().MyWindowEventList->MyDict = std::make_shared<Dictionary>();
        for (std::size_t i = 0; i + 1 < course.size(); i += 2)
            EXPECT_EQ(Post(course[i]), course[i + 1]) << course[i];
    }

    SimulatedMachine machine;
    std::uint32_t files = 3000000000U;
};

const std::string all = ";PID=12;Extra=sleep;BSD=sdz1;Progress=250;VolName=Data;Item=/a;ScanType=0;"
                        "status=Copying;Type=4.9;FolderBackup=no;dVolName=a///b//c;FileName=f;"
                        "FileProgress=5;NumFilesExamined=7;pid=1;progress=1";
const std::string others = ";PID=abc;Extra=no;BSD=sdz2;Progress=249.9;VolName=Else;Item=;"
                           "ScanType=00;status=;Type= 33x;dVolName=z;FileName=;NumFilesExamined=6";

TEST_F(TaskRows, AScannerAndABackupTakeOverWhatIsSent) {
    ExpectRows({"KQMS", "task=1", "KQMS" + all,
                "bsd='sdz1' extra='sleep' pid=12.0 progress=250.0 status='/a' task=1 type='0' "
                "volume='Data'",
                "kqms" + others,
                "bsd='sdz1' extra='sleep' pid=0.0 progress=250.0 status='' task=1 type='00' "
                "volume='Data'"});
    ExpectRows({"KQMS;Progress=-1", "progress=-1.0 task=1", "KQMS;Progress=x",
                "progress=0.0 task=1", "KQMS;Progress=1.5e1", "progress=15.0 task=1"});
    ExpectRows({"KQBackup", "task=6", "kQbAcKuP" + all,
                "bsd='sdz1' destination='a//b/c' extra='sleep' folderbackup=True pid=12.0 "
                "progress=250.0 status='Copying' task=6 type=4.9 volume='Data'",
                "KQBackup" + others,
                "bsd='sdz1' destination='a//b/c' extra='sleep' folderbackup=True pid=0.0 "
                "progress=249.9 status='' task=6 type=33.0 volume='Data'"});
}

TEST_F(TaskRows, ADefragmenterComputesItsProgressFromTheFilesOfItsVolume) {
    const std::string checking = "fileprogress='Checking File Fragmentation...'";
    ExpectRows(
        {"KQDefrag", checking + " task=2", "KQDefrag" + all,
         "bsd='sdz1' extra='sleep' " + checking + " pid=12.0 status='File: f' task=2 volume='sdz1'",
         "KQDefrag" + others,
         "bsd='sdz1' extra='sleep' " + checking + " pid=0.0 status='File: ' task=2 volume='sdz1'"});
    // A mounted volume; then the look-up file, which comes first, whose lines end with a return.
    const std::string photos = "KQDefrag;BSD=SDB1;NumFilesExamined=";
    ExpectRows({photos + "1500000000",
                "bsd='SDB1' " + checking +
                    " progress=500.0 task=2 totalfiles=3000000000u "
                    "volume='Photos'",
                photos + "3",
                "bsd='SDB1' " + checking +
                    " progress=500.0 task=2 totalfiles=3000000000u volume='Photos'"});
    files = 0;
    ExpectRows({photos + "x",
                "bsd='SDB1' " + checking + " progress=nan task=2 totalfiles=0u volume='Photos'",
                photos + "9",
                "bsd='SDB1' " + checking + " progress=nan task=2 totalfiles=0u volume='Photos'"});
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup",
                      "sda1:No:1\r\nsdb1:No:1\rSdB1:Looked Up:400.9:x\rsdb1:Later:9\rsdz9");
    ExpectRows({photos + "500", "bsd='SDB1' " + checking +
                                    " progress=1250.0 task=2 totalfiles=400 volume='Looked Up'"});
    ExpectRows({"KQDefrag;BSD=sdz9;NumFilesExamined=0",
                "bsd='sdz9' " + checking + " progress=nan task=2 totalfiles=0 volume=''"});
}

TEST_F(TaskRows, ADefragmenterSaysWhatItDoesToTheFork) {
    const std::string checking = "Checking File Fragmentation...", fork = "Defragging Fork: ";
    const std::pair<std::string, std::string> cases[] = {
        {"status=DEFRAGmenting;FileProgress=37.5", fork + "38 % Complete"},
        {"status=Defragmenting", checking},
        {"status=Defragmenting;FileProgress=100", checking},
        {"status=Defragmenting;FileProgress=0.3", fork + " % Complete"},
        {"status=Defragmenting;FileProgress=-5", fork + "0 % Complete"},
        {"status=Defragmenting;FileProgress=x", fork + "0 % Complete"},
        {"status=CHECKing the defrag;FileProgress=5", checking},
        {"FileProgress=5", checking}};
    for (const auto& [sent, text] : cases) {
        Post("KQDefrag;" + sent);
        EXPECT_EQ(machine.Row("KQS_disk.1")->Value("fileprogress").StringValue(), text) << sent;
    }
}

TEST_F(TaskRows, ANameWithTheMarkIsARowWhateverElseWasSent) {
    const Ref<Dictionary> table = machine.Panel().MyWindowEventList->MyDict;
    const std::optional<WireDictionary> none = WireDictionary();
    const std::tuple<PostedNotification, int> cases[] = {
        {{"KQS-disk", "KQMS", none}, 0},        {{std::nullopt, "KQMS", none}, 0},
        {{"KQS_disk", std::nullopt, none}, 0},  {{"KQS_disk", "KQMS", std::nullopt}, 0},
        {{"a kqs_DISK \u00C4", "KQ", none}, 1}, {{"A KQS_disk \u00E4", "KQMS", none}, 1},
        {{"KQS_disk", true, none}, 2},          {{"KQS_disk", OtherWireValue(), none}, 2}};
    for (const auto& [posted, rows] : cases) {
        machine.centre.Post(posted);
        machine.Advance();
        EXPECT_EQ(table->Count(), rows) << posted.name.value_or("none");
        EXPECT_EQ(machine.Title(),
                  rows < 2 ? "Brackwater Scheduled Task" : "Brackwater Scheduled Tasks");
    }
    EXPECT_EQ(Shown(*machine.Row("a KQS_disk \u00C4")), "task=1");
    EXPECT_EQ(Shown(*machine.Row("KQS_disk")), "");
}

TEST_F(TaskRows, AValueThatIsNoTextEndsTheProgramWhereItIsRead) {
    const auto post = [this](const char* tool, const char* key) {
        machine.centre.Post({"KQS_disk.1", tool, WireDictionary{{key, WireValue(true)}}});
        machine.Advance();
        return machine.HasEnded();
    };
    Post("KQMS;VolName=first");
    EXPECT_FALSE(post("KQMS", "VolName")) << "the first stays";
    EXPECT_FALSE(post("KQBackup", "FolderBackup")) << "its presence counts";
    EXPECT_FALSE(post("KQMS", "FileName"));
    EXPECT_TRUE(post("KQMS", "Item"));
}

TEST_F(TaskRows, WhileTheMouseButtonIsHeldARowTakesOneUpdateInAQuarterOfASecond) {
    Post("KQMS");
    machine.windows.buttonDown = true;
    const auto status = [this](std::chrono::milliseconds later, const std::string& item) {
        machine.Advance(later);
        Post("KQMS;Item=" + item);
        return machine.Row("KQS_disk.1")->Value("Status").StringValue();
    };
    EXPECT_EQ(status(0ms, "a"), "a");
    EXPECT_EQ(status(250ms, "b"), "a") << "fifteen ticks";
    EXPECT_NE(Post("KQMS;Item=new", "KQS_disk.2").find("new"), std::string::npos);
    EXPECT_EQ(status(17ms, "c"), "c") << "sixteen";
    machine.windows.buttonDown = false;
    EXPECT_EQ(status(0ms, "d"), "d");
}

} // namespace
} // namespace kqu

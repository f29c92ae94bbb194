#include "framework/values/Numbers.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace kqu {
namespace {

using namespace simulation;

constexpr const char* task = "KQS_disk.task";

class StatusHandlersTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    void Scanner(Texts texts) { Post("KQMS", texts); }
    void Backup(Texts texts) { Post("KQBackup", texts); }
    void Defragmenter(Texts texts) { Post("KQDefrag", texts); }
    void Post(const char* object, Texts texts) {
        machine.centre.Post(task, object, texts);
        machine.Advance();
    }
    [[nodiscard]] Variant Value(const char* key) { return machine.Row(task)->Value(key); }
    [[nodiscard]] std::string Text(const char* key) { return Value(key).StringValue(); }
    [[nodiscard]] double Progress() { return Value("progress").DoubleValue(); }
    [[nodiscard]] bool Has(const char* key) { return machine.Row(task)->HasKey(key); }

    SimulatedMachine machine;
};

TEST_F(StatusHandlersTest, KeysOfTheWireAreExact) {
    Scanner({{"item", "x"}, {"pid", "1"}, {"progress", "5"}, {"volname", "x"}, {"scantype", "0"}});
    EXPECT_EQ(machine.Row(task)->Count(), 1);
    Backup({{"Item", "x"}, {"Status", "x"}, {"type", "4"}, {"folderbackup", "1"}});
    EXPECT_EQ(machine.Row(task)->Count(), 1);
}

TEST_F(StatusHandlersTest, BackupsTypeIsANumberAndTheScannersIsText) {
    struct Type {
        const char* sent;
        std::int32_t read;
    };
    for (const Type& type : {Type{"4", 4},
                             {"4.9", 4},
                             {"4x", 4},
                             {"+4", 4},
                             {"04", 4},
                             {"3.999", 3},
                             {"", 0},
                             {"-4", -4}}) {
        Backup({{"Type", type.sent}});
        EXPECT_EQ(Value("type").Int32Value(), type.read) << type.sent;
    }
    Backup({{"Type", "0"}});
    // A scanner that inherits the row reads the backup's number as text.
    EXPECT_EQ(Text("type"), "0");
}

TEST_F(StatusHandlersTest, FolderBackupCountsByPresenceAndStays) {
    Backup({{"status", "x"}});
    EXPECT_FALSE(Has("FolderBackup"));
    machine.centre.Post(PostedNotification{task, WireValue(std::string("KQBackup")),
                                           WireDictionary{{"FolderBackup", false}}});
    machine.Advance();
    EXPECT_TRUE(Value("FolderBackup").BooleanValue());
    Backup({{"status", "x"}});
    EXPECT_TRUE(Has("FolderBackup"));
}

TEST_F(StatusHandlersTest, VolumeComesFromTheLookupFileOfTheMisspeltFolder) {
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup",
                      "disk1:Old:7\rDISK9:Archive:10000:x\rdisk9:Second:1\r");
    machine.WriteFile("/Library/Application Support/Brackwater Utilities Support/BSDLookup",
                      "disk9:Decoy:1\r");
    Defragmenter({{"NumFilesExamined", "2500"}});
    EXPECT_FALSE(Has("volume"));
    Defragmenter({{"BSD", "disk9"}, {"NumFilesExamined", "2500"}});
    EXPECT_EQ(Text("volume"), "Archive");
    EXPECT_EQ(Value("TotalFiles").Int32Value(), 10000);
    EXPECT_EQ(Progress(), 250);
    Defragmenter({{"BSD", "disk1"}, {"NumFilesExamined", "2400"}});
    EXPECT_EQ(Progress(), 250);
    EXPECT_EQ(Text("BSD"), "disk9");
    // No upper limit: more files than were counted at the look-up.
    Defragmenter({{"NumFilesExamined", "15000"}});
    EXPECT_EQ(Progress(), 1500);
}

TEST_F(StatusHandlersTest, LookupLinesEndInReturnsAlone) {
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup",
                      "disk1:One:1\r\ndisk2:Two:2\r\n:Empty:3");
    Defragmenter({{"BSD", "disk2"}});
    EXPECT_EQ(Text("volume"), "disk2");
    EXPECT_FALSE(Has("TotalFiles"));
    // What was not found is never looked for again.
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup",
                      "disk2:Two:2\r");
    Defragmenter({{"BSD", "disk2"}});
    EXPECT_EQ(Text("volume"), "disk2");
}

TEST_F(StatusHandlersTest, AVolumeWithoutFilesGivesWhatTheDivisionGives) {
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup", "disk9:Vol\r");
    Defragmenter({{"BSD", "disk9"}});
    EXPECT_EQ(Text("volume"), "Vol");
    EXPECT_TRUE(std::isnan(Progress()));
    // Nothing compares with it, so it stays.
    Defragmenter({{"NumFilesExamined", "5"}});
    EXPECT_TRUE(std::isnan(Progress()));
    machine.centre.Post("KQS_disk.2", "KQDefrag", {{"BSD", "disk9"}, {"NumFilesExamined", "5"}});
    machine.Advance(2s);
    EXPECT_EQ(machine.Row("KQS_disk.2")->Value("progress").DoubleValue(),
              std::numeric_limits<double>::infinity());
    EXPECT_FALSE(machine.HasEnded());
}

TEST_F(StatusHandlersTest, ALookupFileThatCannotBeOpenedEndsTheProgram) {
    std::filesystem::create_directories(
        machine.root / "Application Support/Brackwater Utilties Support/BSDLookup");
    Defragmenter({{"FileName", "x"}});
    EXPECT_FALSE(machine.HasEnded());
    Defragmenter({{"BSD", "disk9"}});
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

} // namespace
} // namespace kqu

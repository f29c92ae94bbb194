#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

class NotificationIntakeTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    void Post(PostedNotification posted) {
        machine.centre.Post(std::move(posted));
        machine.Advance();
    }
    void Post(const std::string& name, const std::string& object, Texts texts = {}) {
        machine.centre.Post(name, object, texts);
        machine.Advance();
    }
    [[nodiscard]] int Rows() { return machine.Panel().MyWindowEventList->MyDict->Count(); }
    [[nodiscard]] std::string Text(const std::string& name, const std::string& key) {
        return machine.Row(name)->Value(key).StringValue();
    }
    [[nodiscard]] SimulatedWindow& Screen() { return *machine.windows.window; }

    SimulatedMachine machine;
};

TEST_F(NotificationIntakeTest, OnlyNamesWithTheMarkMakeRows) {
    for (const char* name : {"", "KQS disk", "KQSdisk", "kqs-disk"})
        Post(name, "KQMS");
    EXPECT_EQ(Rows(), 0);
    EXPECT_FALSE(Screen().IsVisible());
    for (const char* name : {"KQS_disk.1", "xx-kqs_DISK/7", "KQS_disk"})
        Post(name, "KQMS");
    EXPECT_EQ(Rows(), 3);
    EXPECT_TRUE(Screen().IsVisible());
}

TEST_F(NotificationIntakeTest, ANilPartDropsTheNotificationAndAnEmptyDictionaryDoesNot) {
    const WireValue object = std::string("KQMS");
    Post({std::nullopt, object, WireDictionary{}});
    Post({"KQS_disk", std::nullopt, WireDictionary{}});
    Post({"KQS_disk", object, std::nullopt});
    EXPECT_EQ(Rows(), 0);
    Post({"KQS_disk", object, WireDictionary{}});
    EXPECT_EQ(Rows(), 1);
}

TEST_F(NotificationIntakeTest, IdentityIsTheNameAloneWhateverItsCase) {
    Post("KQS_disk.Ä", "KQMS", {{"Item", "one"}, {"VolName", "Data"}});
    Post("kqs_DISK.ä", "KQBackup", {{"status", "two"}, {"VolName", "Other"}});
    ASSERT_EQ(Rows(), 1);
    // The task follows the latest tool; everything else of the former one stays.
    EXPECT_EQ(Text("KQS_disk.Ä", "task"), "6");
    EXPECT_EQ(Text("KQS_disk.Ä", "status"), "two");
    EXPECT_EQ(Text("KQS_disk.Ä", "volume"), "Data");
}

TEST_F(NotificationIntakeTest, TheObjectIsJudgedAfterTheRowWasMade) {
    Post("KQS_disk.1", "SomethingElse", {{"PID", "1"}});
    Post({"KQS_disk.2", WireValue(5.0), WireDictionary{{"PID", std::string("1")}}});
    Post("KQS_disk.3", "KQMS ", {{"PID", "1"}});
    ASSERT_EQ(Rows(), 3);
    for (const char* name : {"KQS_disk.1", "KQS_disk.2", "KQS_disk.3"})
        EXPECT_EQ(machine.Row(name)->Count(), 0) << name;
    EXPECT_TRUE(Screen().IsVisible());
    Post("KQS_disk.1", "kqbackup");
    EXPECT_EQ(Text("KQS_disk.1", "task"), "6");
}

TEST_F(NotificationIntakeTest, TitleFollowsTheRowCountUnderBothFlavours) {
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Task");
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Task");
    Post("KQS_disk.2", "KQMS");
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Tasks");
    Module1.ParentIsMarlstone = true;
    Post("KQS_disk.3", "KQMS");
    EXPECT_EQ(machine.Title(), "Marlstone Pro Scheduled Tasks");
}

TEST_F(NotificationIntakeTest, ANewRowIsFinishedBeforeThePanelComesIntoView) {
    machine.windows.calls.clear();
    Post("KQS_disk.1", "KQMS", {{"Progress", "456"}});
    const auto& calls = machine.windows.calls;
    const auto at = [&](const std::string& call) {
        return std::distance(calls.begin(), std::find(calls.begin(), calls.end(), call));
    };
    ASSERT_LT(at("alpha 1"), std::ssize(calls));
    EXPECT_LT(at("present 340 73"), at("alpha 1"));
    machine.windows.calls.clear();
    Post("KQS_disk.2", "KQMS", {{"Progress", "456"}});
    EXPECT_LT(at("size 340 146"), at("alpha 1"));
    EXPECT_LT(at("title Brackwater Scheduled Tasks"), at("present 340 146"));
    EXPECT_LT(at("present 340 146"), at("alpha 1"));
    // The half-made row, resized but not yet filled, was never shown.
    EXPECT_EQ(std::count(calls.begin(), calls.begin() + at("alpha 1"), "present 340 146"), 1);
}

TEST_F(NotificationIntakeTest, AnUpdateChangesTheTableAndDrawsNothing) {
    Post("KQS_disk.1", "KQMS", {{"Item", "one"}});
    machine.Advance(600ms);
    machine.windows.calls.clear();
    for (int i = 0; i < 1000; ++i)
        machine.centre.Post("KQS_disk.1", "KQMS", {{"Item", "other"}});
    machine.Advance(1ms);
    EXPECT_EQ(Text("KQS_disk.1", "Status"), "other");
    EXPECT_TRUE(machine.windows.calls.empty());
    machine.Advance(500ms);
    EXPECT_EQ(machine.windows.calls, std::vector<std::string>{"present 340 73"});
}

TEST_F(NotificationIntakeTest, RegistersThreeTimesAndHearsEveryNotificationOnce) {
    EXPECT_EQ(machine.centre.listeners, 1);
    Post("KQS_disk.1", "KQBackup", {{"Progress", "10"}});
    int received = 0;
    auto& control = *machine.Panel().DiskNotification;
    const auto handler = control.Received;
    control.Received = [&](const auto& name, const auto& object, const auto& userInfo) {
        ++received;
        handler(name, object, userInfo);
    };
    Post("KQS_disk.1", "KQBackup", {{"Progress", "20"}});
    EXPECT_EQ(received, 1);
}

TEST_F(NotificationIntakeTest, BeforeTheOpeningIsDoneNothingIsTakenIn) {
    machine.Panel().startupdone = false;
    Screen().collapsed = true;
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(Rows(), 0);
    EXPECT_EQ(Screen().tileUpdates, 1);
    machine.Panel().startupdone = true;
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(Rows(), 1);
}

TEST_F(NotificationIntakeTest, EveryNotificationOfACollapsedPanelUpdatesItsTile) {
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(Screen().tileUpdates, 0);
    Screen().collapsed = true;
    Post("no such name", "KQMS");
    Post({std::nullopt, std::nullopt, std::nullopt});
    Post("KQS_disk.1", "KQMS");
    Post("KQS_disk.2", "unknown");
    EXPECT_EQ(Screen().tileUpdates, 4);
}

TEST_F(NotificationIntakeTest, AHeldButtonLetsOneUpdatePerQuarterSecondThroughAndLosesTheRest) {
    Post("KQS_disk.1", "KQMS", {{"Item", "start"}});
    Post("KQS_disk.2", "KQMS", {{"Item", "start"}});
    EXPECT_EQ(machine.Panel().LastDragUpdate, 0);
    machine.windows.buttonDown = true;
    Post("KQS_disk.1", "KQMS", {{"Item", "passes"}});
    EXPECT_EQ(Text("KQS_disk.1", "Status"), "passes");
    machine.Advance(50ms);
    // One clock for all rows, and the new row neither waits nor moves it.
    Post("KQS_disk.2", "KQMS", {{"Item", "lost"}});
    Post("KQS_disk.3", "KQMS", {{"Item", "new"}});
    EXPECT_EQ(Text("KQS_disk.2", "Status"), "start");
    EXPECT_EQ(Text("KQS_disk.3", "Status"), "new");
    EXPECT_EQ(machine.Panel().LastDictcount, 3);
    machine.Advance(100ms);
    const std::int32_t passed = machine.Panel().LastDragUpdate;
    machine.Advance(84ms + 16ms);
    // 250 ms are 15 ticks: not above them yet.
    Post("KQS_disk.2", "KQMS", {{"Item", "still lost"}});
    EXPECT_EQ(Text("KQS_disk.2", "Status"), "start");
    EXPECT_EQ(machine.Panel().LastDragUpdate, passed);
    machine.Advance(17ms);
    Post("KQS_disk.2", "KQMS", {{"Item", "passes again"}});
    EXPECT_EQ(Text("KQS_disk.2", "Status"), "passes again");
    // The row count is noted for the lost ones as well.
    machine.Panel().MyWindowEventList->MyDict->Remove("KQS_disk.3");
    Post("KQS_disk.2", "KQMS", {{"Item", "lost"}});
    EXPECT_EQ(machine.Panel().LastDictcount, 2);
    machine.windows.buttonDown = false;
    Post("KQS_disk.2", "KQMS", {{"Item", "free"}});
    EXPECT_EQ(Text("KQS_disk.2", "Status"), "free");
}

TEST_F(NotificationIntakeTest, ABurstOfNewNamesNestsWithoutLosingOne) {
    for (int i = 0; i < 500; ++i)
        machine.centre.Post("KQS_disk." + std::to_string(i), "KQMS", {{"Item", "x"}});
    machine.Advance(1ms);
    EXPECT_EQ(Rows(), 500);
    EXPECT_EQ(machine.Panel().LastDictcount, 500);
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Tasks");
    EXPECT_FALSE(machine.HasEnded());
}

TEST_F(NotificationIntakeTest, AFirstValueKeyIsNotReadOnceItIsStored) {
    Post("KQS_disk", "KQMS", {{"Extra", "sleep"}, {"VolName", "Data"}, {"BSD", "sda1"}});
    Post({"KQS_disk", WireValue(std::string("KQMS")),
          WireDictionary{{"Extra", 1.0}, {"VolName", 1.0}, {"BSD", 1.0}}});
    EXPECT_FALSE(machine.HasEnded());
}

TEST_F(NotificationIntakeTest, AMissingFunctionEndsTheProgramWithStatusZero) {
    machine.functions.Remove<functions::IsWindowCollapsed>();
    Post("no such name", "KQMS");
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

struct WrongValue {
    const char* object;
    const char* key;
    bool ends;
};

TEST(WireValues, AValueThatIsNoTextEndsTheProgramOnlyIfItIsRead) {
    // Keys of other tools and of another case are not read, nor is the presence-only key, nor the
    // fork's progress outside the defragmenting phase.
    const WrongValue cases[] = {
        {"KQMS", "PID", true},
        {"KQMS", "Progress", true},
        {"KQMS", "ScanType", true},
        {"KQMS", "VolName", true},
        {"KQMS", "pid", false},
        {"KQMS", "status", false},
        {"KQBackup", "Type", true},
        {"KQBackup", "type", false},
        {"KQBackup", "dVolName", true},
        {"KQBackup", "Item", false},
        {"KQDefrag", "BSD", true},
        {"KQBackup", "FolderBackup", false},
        {"KQDefrag", "FileName", true},
        {"unknown", "PID", false},
        {"KQDefrag", "FileProgress", false},
    };
    for (const WrongValue& wrong : cases) {
        const WireValue values[] = {5.0, true, OtherWireValue{}};
        for (const WireValue& value : values) {
            SimulatedMachine machine;
            machine.Start();
            machine.centre.Post(PostedNotification{"KQS_disk", WireValue(std::string(wrong.object)),
                                                   WireDictionary{{wrong.key, value}}});
            machine.Advance();
            EXPECT_EQ(machine.HasEnded(), wrong.ends) << wrong.object << ' ' << wrong.key;
            EXPECT_EQ(machine.app->ExitStatus(), 0);
        }
    }
}

} // namespace
} // namespace kqu

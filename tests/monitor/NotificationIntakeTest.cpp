#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

class NotificationIntakeTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    void Post(const std::string& name, const std::string& object, Texts texts = {}) {
        machine.centre.Post(name, object, texts);
        machine.Advance();
    }
    [[nodiscard]] int Rows() { return machine.Panel().MyWindowEventList->MyDict->Count(); }
    SimulatedMachine machine;
};

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
    machine.Advance(1s);
    machine.windows.calls.clear();
    machine.Advance(2s);
    EXPECT_TRUE(machine.windows.calls.empty()) << "without rows nothing is repainted";
    Post("KQS_disk.1", "KQMS", {{"Item", "one"}});
    machine.Advance(600ms);
    machine.windows.calls.clear();
    for (int i = 0; i < 1000; ++i)
        machine.centre.Post("KQS_disk.1", "KQMS", {{"Item", "other"}});
    machine.Advance(1ms);
    EXPECT_EQ(machine.Row("KQS_disk.1")->Value("Status").StringValue(), "other");
    EXPECT_TRUE(machine.windows.calls.empty());
    machine.Advance(500ms);
    EXPECT_EQ(machine.windows.calls, std::vector<std::string>{"present 340 73"});
}

TEST_F(NotificationIntakeTest, BeforeTheOpeningIsDoneNothingIsTakenIn) {
    machine.Panel().startupdone = false;
    machine.windows.window->collapsed = true;
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(Rows(), 0);
    EXPECT_EQ(machine.windows.window->tileUpdates, 1);
    machine.Panel().startupdone = true;
    Post("KQS_disk.1", "KQMS");
    EXPECT_EQ(Rows(), 1);
}

TEST_F(NotificationIntakeTest, ALookupFileIsReadUpToSixteenMebibytes) {
    std::string text = std::string((16U << 20U) - 7, ' ') + "\rsda:Me";
    for (const std::string volume : {"Me", "sda"}) {
        machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup", text);
        Post("KQS_disk" + volume, "KQDefrag", {{"BSD", "sda"}});
        EXPECT_EQ(machine.Row("KQS_disk" + volume)->Value("volume").StringValue(), volume);
        text.insert(0, " ");
    }
}

TEST_F(NotificationIntakeTest, ALookupFileThatCannotBeOpenedEndsTheProgram) {
    std::filesystem::create_directories(
        machine.root / "Application Support/Brackwater Utilties Support/BSDLookup");
    Post("KQS_disk", "KQDefrag", {{"FileName", "x"}});
    EXPECT_FALSE(machine.HasEnded());
    Post("KQS_disk", "KQDefrag", {{"BSD", "disk9"}});
    EXPECT_TRUE(machine.HasEnded());
}

TEST_F(NotificationIntakeTest, TheDefragmentersFileIsStoredBeforeItsProgressIsRead) {
    Post("KQS_disk", "KQDefrag");
    const Ref<Dictionary> row = machine.Row("KQS_disk");
    machine.centre.Post({"KQS_disk", "KQDefrag",
                         platform::WireDictionary{{"status", std::string("defrag")},
                                                  {"FileName", std::string("a")},
                                                  {"FileProgress", platform::OtherWireValue()}}});
    machine.Advance();
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(row->Value("Status").StringValue(), "File: a");
}

TEST_F(NotificationIntakeTest, ARowKeepsOfALongTextWhatItCanShow) {
    const std::string text = "start" + std::string(1 << 20, 'x') + "end";
    Post("KQS_disk.1", "KQBackup",
         {{"status", text.c_str()}, {"VolName", text.c_str()}, {"dVolName", text.c_str()}});
    Post("KQS_disk.2", "KQDefrag", {{"FileName", text.c_str()}, {"BSD", text.c_str()}});
    for (const auto& [name, key] : {std::pair{"KQS_disk.1", "Status"},
                                    {"KQS_disk.1", "volume"},
                                    {"KQS_disk.1", "destination"},
                                    {"KQS_disk.2", "Status"},
                                    {"KQS_disk.2", "volume"}}) {
        const std::string kept = machine.Row(name)->Value(key).StringValue();
        EXPECT_LT(kept.size(), 10000U) << key;
        EXPECT_TRUE(kept.find("startx") != std::string::npos && kept.ends_with("xend")) << key;
    }
}

TEST_F(NotificationIntakeTest, WhatRunsIsNamedAndItsChangeTold) {
    EXPECT_EQ(machine.power.WhatRuns(), "");
    const int before = machine.power.changes;
    machine.centre.Post("KQS_disk.1", "unknown", {});
    machine.centre.Post("KQS_disk.2", "KQDefrag", {{"BSD", "sdz9"}});
    machine.Advance();
    EXPECT_EQ(machine.power.WhatRuns(), "Running a disk, Defragmenting sdz9");
    machine.centre.Post("KQS_disk.3", "KQBackup", {{"VolName", "Home"}});
    machine.centre.Post("KQS_disk.4", "KQMS", {{"VolName", "Data"}});
    machine.Advance();
    EXPECT_EQ(machine.power.WhatRuns(),
              "Running a disk, Defragmenting sdz9, Backing up Home and 1 more");
    EXPECT_EQ(machine.power.changes, before + 4);
}

} // namespace
} // namespace kqu

#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

constexpr std::uint32_t canSleep = 0xE0000270;

class SleepNoteTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }
    void AddRow() {
        machine.centre.Post("KQS_disk.1", "unknown", {});
        machine.Advance();
    }
    SimulatedMachine machine;
};

TEST_F(SleepNoteTest, AnswersByTheWholeTable) {
    AddRow();
    struct Case {
        bool battery, prevent, sleepOnBatt, sleepOnAC, objects;
    };
    std::vector<Case> cases;
    for (const bool any : {true, false})
        for (const bool other : {true, false}) {
            cases.push_back({true, true, any, other, false});
            cases.push_back({true, false, false, any, true});
            cases.push_back({false, any, other, false, true});
            cases.push_back({false, any, other, true, false});
        }
    cases.push_back({true, false, true, false, true});
    cases.push_back({true, false, true, true, false});
    for (const Case& c : cases) {
        machine.powerSource = c.battery ? "Battery Power" : "AC Power";
        Module1.PreventScheduleOnBatt = c.prevent;
        Module1.SleepOnBatt = c.sleepOnBatt;
        Module1.SleepOnAC = c.sleepOnAC;
        for (const std::uint32_t message :
             {0xE0000240U, 0xE0000250U, 0xE0000270U, 0xE0000280U, 0xE0000310U})
            EXPECT_EQ(machine.power.Ask(message), c.objects)
                << c.battery << c.prevent << c.sleepOnBatt << c.sleepOnAC;
        for (const std::uint32_t message : {0U, 0xE0000300U, 0xE0000320U, 0x270U})
            EXPECT_FALSE(machine.power.Ask(message));
    }
}

TEST_F(SleepNoteTest, WithoutRowsNothingIsHeldBackAndThePowerSourceIsNotAsked) {
    int asked = 0;
    machine.functions.Set<functions::IOPSCopyPowerSourcesInfo>([&] { return ++asked; });
    EXPECT_FALSE(machine.power.Ask(canSleep));
    EXPECT_EQ(asked, 0);
    AddRow();
    EXPECT_TRUE(machine.power.Ask(canSleep));
    EXPECT_EQ(asked, 2);
}

TEST_F(SleepNoteTest, EachQuestionGoesByItsOwnAnswer) {
    AddRow();
    Module1.SleepOnBatt = false;
    Module1.SleepOnAC = true;
    int asked = 0;
    machine.functions.Set<functions::IOPSCopyPowerSourcesInfo>([&] {
        machine.powerSource = ++asked == 1 ? "AC Power" : "Battery Power";
        return 7;
    });
    // On AC at the first question, on battery at the second.
    EXPECT_TRUE(machine.power.Ask(canSleep));
}

TEST_F(SleepNoteTest, WhatRunsIsNamedAndItsChangeTold) {
    EXPECT_EQ(machine.power.WhatRuns(), "");
    const int before = machine.power.changes;
    machine.centre.Post("KQS_disk.1", "unknown", {});
    machine.centre.Post("KQS_disk.2", "KQMS", {{"VolName", "Data"}});
    machine.Advance();
    EXPECT_EQ(machine.power.WhatRuns(), "Running a disk, Scanning Data");
    machine.centre.Post("KQS_disk.3", "KQBackup", {{"VolName", "Home"}});
    machine.centre.Post("KQS_disk.4", "KQDefrag", {{"BSD", "sdz9"}});
    machine.Advance();
    EXPECT_EQ(machine.power.WhatRuns(),
              "Running a disk, Scanning Data, Backing up Home and 1 more");
    EXPECT_EQ(machine.power.changes, before + 4);
}

TEST_F(SleepNoteTest, PowerSourceIsDecidedByTheAbsenceOfAC) {
    struct Case {
        std::optional<std::string> source;
        bool battery;
    };
    for (const Case& c : {Case{"AC Power", false},
                          {"ac", false},
                          {"Battery Power", true},
                          {"UPS Power", true},
                          {"Battery Backup", false},
                          {"", true},
                          {std::string(150, 'A') + "C", true},
                          {std::nullopt, false}}) {
        machine.powerSource = c.source;
        EXPECT_EQ(Module1.BatteryPower(), c.battery) << c.source.value_or("none");
    }
}

TEST_F(SleepNoteTest, OnlyTheFirstFunctionMayBeMissing) {
    int released = 0;
    machine.functions.Set<functions::CFRelease>([&](std::int32_t) { ++released; });
    EXPECT_FALSE(Module1.BatteryPower());
    // The name that nobody owns is released all the same, and the blob.
    EXPECT_EQ(released, 2);
    machine.functions.Remove<functions::CFStringGetCString>();
    EXPECT_THROW(static_cast<void>(Module1.BatteryPower()), FunctionNotFoundException);
    EXPECT_EQ(released, 2);
    machine.functions.Remove<functions::IOPSGetProvidingPowerSourceType>();
    EXPECT_THROW(static_cast<void>(Module1.BatteryPower()), FunctionNotFoundException);
    machine.functions.Remove<functions::IOPSCopyPowerSourcesInfo>();
    EXPECT_FALSE(Module1.BatteryPower());
}

} // namespace
} // namespace kqu

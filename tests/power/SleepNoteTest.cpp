#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;

constexpr std::uint32_t canSleep = 0xE0000270;

class SleepNoteTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }
    SimulatedMachine machine;
};

TEST_F(SleepNoteTest, WithoutRowsNothingIsHeldBackAndThePowerSourceIsNotAsked) {
    int asked = 0;
    machine.functions.Set<functions::IOPSCopyPowerSourcesInfo>([&] { return ++asked; });
    EXPECT_FALSE(machine.power.Ask(canSleep));
    EXPECT_EQ(asked, 0);
    machine.centre.Post("KQS_disk.1", "unknown", {});
    machine.Advance();
    EXPECT_TRUE(machine.power.Ask(canSleep));
    EXPECT_EQ(asked, 2);
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

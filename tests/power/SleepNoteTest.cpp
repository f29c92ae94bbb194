#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;

TEST(SleepNote, WhatRunsIsNamedAndItsChangeTold) {
    SimulatedMachine machine;
    machine.Start();
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

} // namespace
} // namespace kqu

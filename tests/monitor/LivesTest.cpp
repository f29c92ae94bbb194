#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

// A few whole lives of the program in virtual time, told by their moments.

namespace kqu {
namespace {

using namespace simulation;

class Lives : public testing::Test {
  protected:
    void Task(std::chrono::nanoseconds begin, std::chrono::nanoseconds end, std::int32_t pid) {
        machine.At(begin, [this, pid] {
            machine.PostScanner("KQS_disk." + std::to_string(pid), std::to_string(pid));
        });
        machine.At(end, [this, pid] { machine.processes.living.erase(pid); });
    }
    void ExpectVisible(std::chrono::nanoseconds time, bool visible) {
        machine.At(time,
                   [this, visible] { EXPECT_EQ(machine.windows.window->IsVisible(), visible); });
    }

    SimulatedMachine machine;
};

TEST_F(Lives, NobodyEverComes) {
    ExpectVisible(119900ms, false);
    EXPECT_EQ(machine.RunToEnd(), 120.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    EXPECT_EQ(machine.processes.started, std::vector<std::string>{"pmset -g"});
}

TEST_F(Lives, ASuccessorNineSecondsLater) {
    Task(1s, 122s, 10);
    ExpectVisible(122900ms, true);
    ExpectVisible(131900ms, false);
    Task(132s, 150500ms, 11);
    ExpectVisible(132100ms, true);
    // Reaped at 153, and the second retirement lasts ten seconds again.
    EXPECT_EQ(machine.RunToEnd(), 163.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

TEST_F(Lives, ARowWithoutAProcessLivesForEver) {
    machine.At(1s, [&] { machine.centre.Post("KQS_disk.1", "unknown", {{"PID", "5"}}); });
    Task(2s, 3s, 10);
    ExpectVisible(24h, true);
    machine.At(24h, [&] { machine.windows.RequestClose(); });
    EXPECT_EQ(machine.RunToEnd(), 86400.0);
}

TEST_F(Lives, RepaintsTwiceASecondWhileThereAreRowsAndNeverWithout) {
    machine.Start();
    machine.Advance(10s);
    const int before = machine.windows.window->presents;
    machine.Advance(10s);
    EXPECT_EQ(machine.windows.window->presents, before);
    machine.centre.Post("KQS_disk.1", "KQMS", {});
    machine.Advance(1ms);
    const int shown = machine.windows.window->presents;
    machine.Advance(3500ms);
    EXPECT_EQ(machine.windows.window->presents, shown + 7);
}

} // namespace
} // namespace kqu

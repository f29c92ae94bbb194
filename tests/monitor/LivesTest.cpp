#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// Whole lives of the program in virtual time: tasks come and go, and the program ends when there is
// nothing left to show.

namespace kqu {
namespace {

using namespace simulation;

class Lives : public testing::Test {
  protected:
    void TaskAt(std::chrono::nanoseconds time, const std::string& name, std::int32_t pid) {
        machine.At(time, [this, name, pid] { machine.PostScanner(name, std::to_string(pid)); });
    }
    void DeathAt(std::chrono::nanoseconds time, std::int32_t pid) {
        machine.At(time, [this, pid] { machine.processes.living.erase(pid); });
    }
    void LookAt(std::chrono::nanoseconds time, std::function<void()> look) {
        machine.At(time, std::move(look));
    }
    [[nodiscard]] int Rows() { return machine.Panel().MyWindowEventList->MyDict->Count(); }
    [[nodiscard]] bool Visible() { return machine.windows.window->IsVisible(); }
    [[nodiscard]] std::ptrdiff_t PsRuns() const {
        const auto& started = machine.processes.started;
        return std::count(started.begin(), started.end(), "/bin/ps -ax -o 'pid'");
    }

    SimulatedMachine machine;
};

TEST_F(Lives, NobodyEverComes) {
    LookAt(119900ms, [&] { EXPECT_FALSE(Visible()); });
    EXPECT_EQ(machine.RunToEnd(), 120.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    EXPECT_EQ(PsRuns(), 0);
}

TEST_F(Lives, OneTaskComesAndGoes) {
    TaskAt(5s, "KQS_disk.1", 4711);
    LookAt(5001ms, [&] { EXPECT_TRUE(Visible()); });
    DeathAt(130s, 4711);
    LookAt(131900ms, [&] { EXPECT_TRUE(Visible()); });
    LookAt(132100ms, [&] {
        EXPECT_FALSE(Visible());
        EXPECT_EQ(Rows(), 0);
        EXPECT_EQ(machine.Panel().LastDictcount, 0);
        EXPECT_EQ(machine.windows.window->content.height, 73);
    });
    // Reaped at 132, ten seconds of grace.
    EXPECT_EQ(machine.RunToEnd(), 142.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

TEST_F(Lives, ASuccessorNineSecondsLater) {
    TaskAt(1s, "KQS_disk.1", 10);
    DeathAt(122s, 10);
    TaskAt(132s, "KQS_disk.2", 11);
    LookAt(131900ms, [&] { EXPECT_FALSE(Visible()); });
    LookAt(132100ms, [&] { EXPECT_TRUE(Visible()); });
    LookAt(134s, [&] { EXPECT_EQ(machine.Panel().Timer3->Mode(), TimerMode::Off); });
    DeathAt(150500ms, 11);
    // The second retirement lasts ten seconds again.
    EXPECT_EQ(machine.RunToEnd(), 163.0);
}

TEST_F(Lives, AnEmptyTableAtTwoMinutesEndsTheGraceAsWell) {
    TaskAt(1s, "KQS_disk.1", 10);
    DeathAt(113s, 10);
    EXPECT_EQ(machine.RunToEnd(), 120.0);
}

TEST_F(Lives, ARowInTheLastSecondHoldsTheStartGuardOffForGood) {
    TaskAt(119s, "KQS_disk.1", 10);
    DeathAt(200s, 10);
    EXPECT_EQ(machine.RunToEnd(), 211.0);
}

TEST_F(Lives, TasksThatDieTogetherGoInOnePass) {
    for (int i = 1; i <= 3; ++i)
        TaskAt(1s, "KQS_disk." + std::to_string(i), i * 10);
    LookAt(2s, [&] { EXPECT_EQ(machine.Panel().Height(), 219); });
    DeathAt(124s, 20);
    DeathAt(124s, 30);
    LookAt(126100ms, [&] {
        EXPECT_EQ(Rows(), 1);
        EXPECT_EQ(machine.Panel().Height(), 73);
        EXPECT_EQ(machine.Title(), "Brackwater Scheduled Task");
        EXPECT_EQ(machine.Panel().LastDictcount, 3);
        EXPECT_TRUE(Visible());
    });
    DeathAt(127s, 10);
    EXPECT_EQ(machine.RunToEnd(), 139.0);
}

TEST_F(Lives, ARowWithoutAProcessLivesForEver) {
    machine.At(1s, [&] { machine.centre.Post("KQS_disk.1", "unknown", {{"PID", "5"}}); });
    TaskAt(2s, "KQS_disk.2", 10);
    DeathAt(3s, 10);
    LookAt(24h, [&] {
        EXPECT_EQ(Rows(), 1);
        EXPECT_TRUE(Visible());
        machine.windows.RequestClose();
    });
    EXPECT_EQ(machine.RunToEnd(), 86400.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

TEST_F(Lives, NumbersThatNoProcessHasAreReapedAtTheFirstPass) {
    int row = 0;
    for (const char* pid : {"0", "-1", "abc", "", "4294967297", "1e300", "-1e300", "99999999999"})
        machine.At(1s, [this, pid, name = "KQS_disk." + std::to_string(++row)] {
            machine.centre.Post(name, "KQMS", {{"PID", pid}});
        });
    machine.At(1s, [&] { machine.centre.Post("KQS_disk.alive", "KQMS", {{"PID", "1.75"}}); });
    LookAt(3100ms, [&] {
        EXPECT_EQ(Rows(), 1);
        machine.windows.LoseDisplay();
    });
    EXPECT_NEAR(machine.RunToEnd(), 3.1, 0.001);
}

TEST_F(Lives, OneListOfProcessesForEachRowWithAProcessInEachPass) {
    for (int i = 1; i <= 3; ++i)
        TaskAt(1s, "KQS_disk." + std::to_string(i), i * 10);
    machine.At(1s, [&] { machine.centre.Post("KQS_disk.blank", "unknown", {}); });
    LookAt(2s, [&] { EXPECT_EQ(PsRuns(), 0); });
    LookAt(3100ms, [&] { EXPECT_EQ(PsRuns(), 3); });
    LookAt(6100ms, [&] {
        EXPECT_EQ(PsRuns(), 6);
        machine.windows.RequestClose();
    });
    machine.RunToEnd();
}

TEST_F(Lives, AnEmptyListOfProcessesMeansThatAllAreGone) {
    TaskAt(121s, "KQS_disk.1", 10);
    TaskAt(1s, "KQS_disk.2", 11);
    machine.At(130s, [&] {
        machine.processes.commands["/bin/ps -ax -o 'pid'"] = [] { return std::string(); };
    });
    EXPECT_EQ(machine.RunToEnd(), 142.0);
}

TEST_F(Lives, ShrinksByARowOnlyWhileFewerRowsThanThePanelShows) {
    machine.windows.screens = {{0, 0, 1280, 260}};
    for (int i = 1; i <= 4; ++i)
        TaskAt(1s, "KQS_disk." + std::to_string(i), i * 10);
    const auto expect = [&](std::chrono::nanoseconds time, int rows, int height, int maximum) {
        LookAt(time, [=, this] {
            EXPECT_EQ(Rows(), rows);
            EXPECT_EQ(machine.Panel().Height(), height);
            EXPECT_EQ(machine.Panel().ScrollBar1->Maximum(), maximum);
        });
    };
    expect(2s, 4, 146, 2);
    DeathAt(4s, 10);
    expect(7s, 3, 146, 1);
    DeathAt(7s, 20);
    expect(10s, 2, 146, 0);
    DeathAt(10s, 30);
    expect(13s, 1, 73, 0);
    LookAt(14s, [&] { machine.windows.RequestClose(); });
    machine.RunToEnd();
}

TEST_F(Lives, ANewRowDuringTheProcessListIsShownAtOnce) {
    TaskAt(1s, "KQS_disk.1", 10);
    machine.At(2s, [&] {
        machine.processes.whileReading = [&] {
            machine.processes.whileReading = nullptr;
            machine.PostScanner("KQS_disk.2", "11");
        };
    });
    LookAt(3001ms, [&] {
        EXPECT_EQ(Rows(), 2);
        EXPECT_EQ(machine.windows.window->content.height, 146);
        machine.windows.RequestClose();
    });
    machine.RunToEnd();
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

TEST_F(Lives, ASlowProcessListLetsTheReaperRunInsideItself) {
    for (int i = 1; i <= 2; ++i)
        TaskAt(1s, "KQS_disk." + std::to_string(i), i * 10);
    int deepest = 0;
    machine.At(2s, [&] {
        machine.processes.commands["/bin/ps -ax -o 'pid'"] = [&] {
            machine.time.Pass(4s);
            return machine.processes.List();
        };
        machine.processes.whileReading = [&] {
            deepest = std::max(deepest, static_cast<int>(machine.processes.openStreams));
        };
    });
    LookAt(60s, [&] {
        EXPECT_EQ(Rows(), 2);
        machine.windows.RequestClose();
    });
    machine.RunToEnd();
    EXPECT_GE(deepest, 2);
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST_F(Lives, ARowRemovedByANestedPassEndsTheProgramQuietly) {
    TaskAt(1s, "KQS_disk.1", 10);
    DeathAt(2s, 10);
    // The first pass sees the dead process; before it removes the row, a nested pass does.
    machine.At(2s, [&] {
        machine.processes.commands["/bin/ps -ax -o 'pid'"] = [&, first = true]() mutable {
            if (std::exchange(first, false))
                machine.time.Pass(3500ms);
            return machine.processes.List();
        };
    });
    EXPECT_LT(machine.RunToEnd(), 8.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST_F(Lives, RepaintsTwiceASecondWhileThereAreRowsAndNeverWithout) {
    machine.Start();
    machine.Advance(10s);
    const int before = machine.windows.window->presents;
    machine.Advance(10s);
    EXPECT_EQ(machine.windows.window->presents, before);
    EXPECT_EQ(machine.Panel().MyInc, 0);
    machine.centre.Post("KQS_disk.1", "KQMS", {});
    machine.Advance(1ms);
    const int shown = machine.windows.window->presents;
    machine.Advance(3500ms);
    EXPECT_EQ(machine.windows.window->presents, shown + 7);
    EXPECT_EQ(machine.Panel().MyInc, 1);
}

TEST_F(Lives, AClockThatJumpsBringsOnePassAndNotMany) {
    TaskAt(1s, "KQS_disk.1", 10);
    machine.At(4s, [&] { machine.time.Pass(1h); });
    LookAt(3604500ms, [&] {
        // One pass before, one for all that were missed; the guard of the start found a row.
        EXPECT_EQ(PsRuns(), 2);
        EXPECT_TRUE(Visible());
        machine.windows.RequestClose();
    });
    machine.RunToEnd();
}

TEST_F(Lives, AnExceptionInAnyHandlerEndsTheProgramWithStatusZero) {
    TaskAt(1s, "KQS_disk.1", 1);
    machine.At(2s, [&] { machine.functions.Remove<functions::pclose>(); });
    EXPECT_EQ(machine.RunToEnd(), 3.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

TEST_F(Lives, AnEndingProgramReapsNoFurther) {
    for (int i = 1; i <= 5; ++i)
        TaskAt(1s, "KQS_disk." + std::to_string(i), i * 10);
    machine.At(2s,
               [&] { machine.processes.whileReading = [&] { machine.windows.RequestClose(); }; });
    EXPECT_EQ(machine.RunToEnd(), 3.0);
    EXPECT_EQ(PsRuns(), 1);
}

TEST_F(Lives, TheCloseEventEndsTheProgramWithRowsPresent) {
    TaskAt(1s, "KQS_disk.1", 1);
    machine.At(2s, [&] { machine.windows.RequestClose(); });
    EXPECT_EQ(machine.RunToEnd(), 2.0);
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

} // namespace
} // namespace kqu

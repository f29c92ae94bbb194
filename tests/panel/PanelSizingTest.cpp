#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

class PanelSizingTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    void AddRows(int count) {
        for (int i = 0; i < count; ++i) {
            machine.centre.Post("KQS_disk." + std::to_string(++names_), "KQMS", {});
            machine.Advance();
        }
    }
    /// Rows put on the table by hand, without any sizing.
    void TableOf(int count) {
        auto& table = *panel().MyWindowEventList->MyDict;
        while (table.Count() > 0)
            table.Remove(table.Key(0));
        for (int i = 0; i < count; ++i)
            table.SetValue("row " + std::to_string(i), std::make_shared<Dictionary>());
    }
    void ChangeFromOutside(int width, int height) {
        machine.windows.ChangeFromOutside({100, 100, width, height});
        machine.Advance();
    }
    /// A place on the grip, on the desktop.
    [[nodiscard]] platform::Point OnGrip(int x, int y) {
        return {panel().Left() + panel().Canvas1->Left() + x,
                panel().Top() + panel().Canvas1->Top() + y};
    }
    void Press(platform::Point point) {
        machine.windows.Press(point);
        machine.Advance();
    }
    void Move(platform::Point point) {
        machine.windows.MoveTo(point);
        machine.Advance();
    }
    void Release() {
        machine.windows.Release();
        machine.Advance();
    }
    [[nodiscard]] Window1& panel() { return machine.Panel(); }
    [[nodiscard]] int Maximum() { return panel().ScrollBar1->Maximum(); }

    SimulatedMachine machine;

  private:
    int names_ = 0;
};

TEST_F(PanelSizingTest, ScreenUpdatesAlwaysPairAndThePanelShowsOneChange) {
    AddRows(1);
    panel().ChangeWindowSize(340, 73, false, false);
    EXPECT_FALSE(machine.screenUpdates.AreHeld());
    machine.Advance();
    const int before = machine.windows.window->presents;
    machine.screenUpdates.Disable();
    panel().ChangeWindowSize(400, 73, false, false);
    machine.Advance();
    EXPECT_EQ(machine.windows.window->presents, before);
    machine.screenUpdates.Enable();
    machine.Advance();
    EXPECT_EQ(machine.windows.window->presents, before + 1);
}

TEST_F(PanelSizingTest, APressWithoutWayKeepsTheWidthAtEveryColumn) {
    AddRows(1);
    for (int x = 0; x < 17; ++x) {
        const platform::Point start = OnGrip(x, 8);
        Press(start);
        EXPECT_TRUE(panel().indrag);
        Move({start.x, start.y + 1});
        EXPECT_EQ(panel().Width(), 340) << x;
        Move({start.x + 3, start.y + 1});
        EXPECT_EQ(panel().Width(), 343) << x;
        Move(start);
        Release();
        EXPECT_FALSE(panel().indrag);
        EXPECT_EQ(panel().Width(), 340);
    }
    EXPECT_EQ(machine.windows.window->drags, 0);
}

TEST_F(PanelSizingTest, HeightGoesByOneRowPerEventFromThePressedLine) {
    AddRows(10);
    // Where the grip was taken decides how far the pointer has to go.
    using Case = std::tuple<int, int, int>;
    for (const auto& [line, way, height] :
         {Case{0, 51, 146}, Case{0, 52, 219}, Case{13, 38, 146}, Case{13, 39, 219},
          Case{0, -21, 146}, Case{0, -22, 73}, Case{13, -34, 146}, Case{13, -35, 73}}) {
        panel().ChangeWindowSize(340, 146, true, true);
        const platform::Point start = OnGrip(8, line);
        Press(start);
        Move({start.x, start.y + way});
        EXPECT_EQ(panel().Height(), height) << line << ", " << way;
        Release();
    }
}

TEST_F(PanelSizingTest, EveryEventOfADragJudgesAnewAndMovesByOneRow) {
    AddRows(1);
    const platform::Point start = OnGrip(8, 8);
    Press(start);
    // A new row grows the panel at once.
    AddRows(1);
    EXPECT_EQ(panel().Height(), 146);
    Move({start.x + 1, start.y});
    EXPECT_EQ(panel().Width(), 341);
    EXPECT_EQ(panel().Height(), 73);
    AddRows(8);
    panel().ChangeWindowSize(340, 73, true, true);
    // A pointer that runs ahead needs further events.
    Move({start.x, start.y + 600});
    machine.Advance(2s);
    EXPECT_EQ(panel().Height(), 146);
    Move({start.x, start.y + 601});
    EXPECT_EQ(panel().Height(), 219);
}

TEST_F(PanelSizingTest, TheWheelGoesByRowsAndTheScrollBarByPages) {
    AddRows(1);
    const auto wheel = [&](int deltaX, int deltaY) {
        machine.windows.Wheel({panel().Left() + 100, panel().Top() + 30}, deltaX, deltaY);
        machine.Advance();
        return panel().ScrollBar1->Value();
    };
    EXPECT_EQ(wheel(0, 1), 0);
    AddRows(24);
    panel().ChangeWindowSize(340, 73, true, true);
    using Turn = std::tuple<int, int, int>;
    for (const auto& [deltaX, deltaY, value] :
         {Turn{0, 1, 1}, Turn{0, 7, 2}, Turn{0, 0, 2}, Turn{5, 0, 2}, Turn{0, -3, 1},
          Turn{0, -1, 0}, Turn{0, -1, 0}})
        EXPECT_EQ(wheel(deltaX, deltaY), value);
    for (const auto& [line, value] : {std::pair{55, 20}, {55, 24}, {2, 4}}) {
        Press({panel().Left() + panel().ScrollBar1->Left() + 5, panel().Top() + line});
        Release();
        EXPECT_EQ(panel().ScrollBar1->Value(), value);
    }
    // Only what no control takes drags the panel; the list leaves the last column free.
    EXPECT_EQ(machine.windows.window->drags, 0);
    Press({panel().Left() + 339, panel().Top() + 20});
    EXPECT_EQ(machine.windows.calls.back(), "drag " + std::to_string(panel().Left() + 339) + " 62");
}

TEST(PanelSizing, HistoriesEndAlikeWithSizesToldAtOnceLateOrNever) {
    std::vector<std::vector<int>> ends;
    for (const SizeEcho echo : {SizeEcho::Never, SizeEcho::AtOnce, SizeEcho::Late}) {
        SimulatedMachine machine;
        machine.windows.echo = echo;
        machine.windows.screens = {{0, 0, 1280, 400}};
        machine.Start();
        for (int i = 0; i < 6; ++i)
            machine.centre.Post("KQS_disk." + std::to_string(i), "KQMS",
                                {{"PID", i % 2 == 0 ? "1" : "777"}});
        machine.Advance(100ms);
        machine.windows.ChangeFromOutside({100, 50, 450, 130});
        machine.Advance(10s);
        machine.windows.ChangeFromOutside({100, 50, 260, 500});
        machine.Advance(1s);
        Window1& panel = machine.Panel();
        ends.push_back({panel.Width(), panel.Height(), panel.LastWidth, panel.LastHeight,
                        panel.ScrollBar1->Maximum(), panel.MyWindowEventList->Width(),
                        panel.MyWindowEventList->MyDict->Count()});
    }
    EXPECT_EQ(ends[1], ends[0]);
    EXPECT_EQ(ends[2], ends[0]);
}

} // namespace
} // namespace kqu

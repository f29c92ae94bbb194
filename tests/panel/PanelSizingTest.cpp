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

TEST_F(PanelSizingTest, ControlsStandWhereTheTableSays) {
    using Case = std::array<int, 6>;
    for (const auto& [width, height, rows, listWidth, barLeft, maximum] :
         {Case{340, 73, 0, 340, 341, 0}, Case{340, 73, 1, 340, 341, 0},
          Case{340, 73, 2, 329, 329, 1}, Case{340, 146, 2, 340, 341, 0},
          Case{340, 146, 3, 329, 329, 1}, Case{340, 219, 5, 329, 329, 2},
          Case{270, 73, 1, 270, 271, 0}, Case{500, 146, 2, 500, 501, 0},
          Case{340, 100, 2, 329, 329, 1}, Case{340, 173, 3, 329, 329, 1}}) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height << " rows " << rows);
        TableOf(rows);
        panel().ChangeWindowSize(width, height, true, true);
        using platform::Rect;
        EXPECT_EQ(panel().MyWindowEventList->Bounds(), (Rect{-1, -1, listWidth, height}));
        EXPECT_EQ(panel().Canvas1->Bounds(), (Rect{width - 18, height - 15, 17, 14}));
        EXPECT_EQ(panel().ScrollBar1->Bounds(), (Rect{barLeft, 0, 10, height - 15}));
        EXPECT_TRUE(panel().ScrollBar1->Visible());
        EXPECT_EQ(Maximum(), maximum);
        EXPECT_EQ(panel().MaxHeight(), std::max(rows, 1) * 73);
    }
}

TEST_F(PanelSizingTest, SizesAreClampedAndTheHeightMovesByOneRowPastHalfARow) {
    enum Mode { byRows, exact };
    using Case = std::tuple<Mode, int, int, platform::Size, platform::Size>;
    for (const auto& [mode, rows, from, asked, becomes] :
         {Case{byRows, 5, 146, {340, 182}, {340, 146}},
          Case{byRows, 5, 146, {340, 183}, {340, 219}},
          Case{byRows, 5, 146, {340, 110}, {340, 146}}, Case{byRows, 5, 146, {340, 109}, {340, 73}},
          Case{byRows, 5, 146, {340, 1000}, {340, 219}},
          Case{byRows, 5, 219, {340, -500}, {340, 146}}, Case{byRows, 5, 73, {340, 20}, {340, 73}},
          Case{exact, 2, 73, {340, 100}, {340, 100}}, Case{exact, 1, 73, {340, 100}, {340, 73}},
          Case{exact, 2, 146, {340, 20}, {340, 73}}, Case{exact, 0, 73, {100, 500}, {270, 73}},
          Case{exact, 1, 73, {900, 73}, {500, 73}}, Case{exact, 1, 73, {-5, -5}, {270, 73}}}) {
        TableOf(rows);
        panel().ChangeWindowSize(340, from, true, true);
        panel().ChangeWindowSize(asked.width, asked.height, mode == exact, false);
        EXPECT_EQ((platform::Size{panel().Width(), panel().Height()}), becomes) << asked.height;
    }
}

TEST_F(PanelSizingTest, NewRowsGrowThePanelUntilTheScreenEnds) {
    using Screen = std::pair<int, int>;
    for (const auto& [screenHeight, rowsThatFit] :
         {Screen{187, 1}, Screen{188, 2}, Screen{260, 2}, Screen{261, 3}, Screen{334, 4}}) {
        machine.windows.screens = {{0, 0, 1280, screenHeight}};
        TableOf(0);
        panel().LastDictcount = 0;
        panel().ChangeWindowSize(340, 73, true, true);
        for (int rows = 1; rows <= rowsThatFit + 2; ++rows) {
            AddRows(1);
            EXPECT_EQ(panel().Height(), std::min(rows, rowsThatFit) * 73) << screenHeight;
            EXPECT_EQ(Maximum(), std::max(rows - rowsThatFit, 0)) << screenHeight;
        }
    }
}

TEST_F(PanelSizingTest, AStaleRowCountLetsThePanelGrowPastTheScreen) {
    machine.windows.screens = {{0, 0, 1280, 300}};
    AddRows(4);
    EXPECT_EQ(panel().Height(), 219);
    panel().MyWindowEventList->MyDict->Remove("KQS_disk.1");
    AddRows(1);
    EXPECT_EQ(panel().Height(), 292);
    // Any notification in between heals the count.
    panel().MyWindowEventList->MyDict->Remove("KQS_disk.2");
    panel().ChangeWindowSize(340, 219, true, true);
    machine.centre.Post("KQS_disk.3", "KQMS", {});
    machine.Advance();
    AddRows(1);
    EXPECT_EQ(panel().Height(), 219);
    EXPECT_EQ(Maximum(), 1);
}

TEST_F(PanelSizingTest, ValueIsLoweredToTheNewMaximumAndNeverRaised) {
    panel().ScrollBar1->SetMaximum(100);
    panel().ScrollBar1->SetValue(8);
    for (const auto& [rows, value] : {std::pair{10, 8}, {5, 3}, {10, 3}}) {
        TableOf(rows);
        panel().ChangeWindowSize(340, 146, true, true);
        EXPECT_EQ(panel().ScrollBar1->Value(), value) << rows;
    }
}

TEST_F(PanelSizingTest, AHeightThatClampsBackToTheLaidOutOneNeedsNoLayout) {
    AddRows(1);
    ChangeFromOutside(340, 300);
    EXPECT_EQ(machine.windows.window->content.height, 73);
    // A width beyond the limit clamps to the laid-out one as well, and then stays as it is.
    panel().ChangeWindowSize(500, 73, false, false);
    ChangeFromOutside(600, 73);
    EXPECT_EQ(panel().Width(), 600);
    EXPECT_EQ(panel().MyWindowEventList->Width(), 500);
}

TEST_F(PanelSizingTest, NothingFollowsTheEdgesWhileTheGripIsHeld) {
    AddRows(2);
    const platform::Rect grip = panel().Canvas1->Bounds();
    panel().indrag = true;
    ChangeFromOutside(400, 146);
    EXPECT_EQ(panel().Canvas1->Bounds(), grip);
    EXPECT_EQ(panel().LastWidth, 340);
    panel().indrag = false;
    ChangeFromOutside(401, 146);
    EXPECT_EQ(panel().LastWidth, 401);
}

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

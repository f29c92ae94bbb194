#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
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

TEST_F(PanelSizingTest, HeightMovesByOneRowPastHalfARow) {
    TableOf(5);
    using Case = std::array<int, 3>;
    for (const auto& [from, asked, becomes] :
         {Case{146, 182, 146}, Case{146, 183, 219}, Case{146, 110, 146}, Case{146, 109, 73},
          Case{146, 1000, 219}, Case{219, -500, 146}, Case{73, 20, 73}, Case{73, 110, 146}}) {
        panel().ChangeWindowSize(340, from, true, true);
        panel().ChangeWindowSize(340, asked, false, false);
        EXPECT_EQ(panel().Height(), becomes) << from << " -> " << asked;
    }
}

TEST_F(PanelSizingTest, SizesAreClampedAlsoInExactMode) {
    using Case = std::array<int, 5>;
    for (const auto& [rows, width, height, becomesWidth, becomesHeight] :
         {Case{2, 340, 100, 340, 100}, Case{1, 340, 100, 340, 73}, Case{2, 340, 20, 340, 73},
          Case{0, 340, 500, 340, 73}, Case{1, 100, 73, 270, 73}, Case{1, 900, 73, 500, 73},
          Case{1, -5, -5, 270, 73}}) {
        TableOf(rows);
        panel().ChangeWindowSize(width, height, true, false);
        EXPECT_EQ(panel().Width(), becomesWidth) << width;
        EXPECT_EQ(panel().Height(), becomesHeight) << height;
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

#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>

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
    [[nodiscard]] Window1& panel() { return machine.Panel(); }
    [[nodiscard]] int Maximum() { return panel().ScrollBar1->Maximum(); }

    SimulatedMachine machine;

  private:
    int names_ = 0;
};

TEST_F(PanelSizingTest, AnEmptyPanelIsLaidOutAsOneRow) {
    EXPECT_EQ(panel().Width(), 340);
    EXPECT_EQ(panel().Height(), 73);
    EXPECT_EQ(Maximum(), 0);
    EXPECT_EQ(panel().LastWidth, 340);
    EXPECT_EQ(panel().LastHeight, 73);
    EXPECT_EQ(panel().MaxHeight(), 73);
    EXPECT_EQ(machine.windows.window->content.Extent(), (platform::Size{340, 73}));
}

TEST_F(PanelSizingTest, ControlsStandWhereTheTableSays) {
    struct Case {
        int width, height, rows, listWidth, gripLeft, gripTop, barLeft, barHeight, maximum;
    };
    for (const Case& c : {Case{340, 73, 1, 340, 322, 58, 341, 58, 0},
                          {340, 73, 2, 329, 322, 58, 329, 58, 1},
                          {340, 146, 2, 340, 322, 131, 341, 131, 0},
                          {340, 146, 3, 329, 322, 131, 329, 131, 1},
                          {340, 219, 5, 329, 322, 204, 329, 204, 2},
                          {270, 73, 1, 270, 252, 58, 271, 58, 0},
                          {500, 146, 2, 500, 482, 131, 501, 131, 0},
                          {340, 100, 2, 329, 322, 85, 329, 85, 1},
                          {340, 173, 3, 329, 322, 158, 329, 158, 1}}) {
        SCOPED_TRACE(std::to_string(c.width) + 'x' + std::to_string(c.height) + " rows " +
                     std::to_string(c.rows));
        TableOf(c.rows);
        panel().ChangeWindowSize(c.width, c.height, true, true);
        EXPECT_EQ(panel().MyWindowEventList->Bounds(),
                  (platform::Rect{-1, -1, c.listWidth, c.height}));
        EXPECT_EQ(panel().Canvas1->Bounds(), (platform::Rect{c.gripLeft, c.gripTop, 17, 14}));
        EXPECT_EQ(panel().ScrollBar1->Bounds(), (platform::Rect{c.barLeft, 0, 10, c.barHeight}));
        EXPECT_TRUE(panel().ScrollBar1->Visible());
        EXPECT_EQ(Maximum(), c.maximum);
        EXPECT_EQ(panel().MaxHeight(), c.rows * 73);
    }
}

TEST_F(PanelSizingTest, HeightMovesByOneRowPastHalfARow) {
    TableOf(5);
    struct Case {
        int from, asked, becomes;
    };
    for (const Case& c : {Case{146, 182, 146},
                          {146, 183, 219},
                          {146, 110, 146},
                          {146, 109, 73},
                          {146, 1000, 219},
                          {219, -500, 146},
                          {73, 20, 73},
                          {73, 110, 146}}) {
        panel().ChangeWindowSize(340, c.from, true, true);
        panel().ChangeWindowSize(340, c.asked, false, false);
        EXPECT_EQ(panel().Height(), c.becomes) << c.from << " -> " << c.asked;
    }
}

TEST_F(PanelSizingTest, SizesAreClampedAlsoInExactMode) {
    struct Case {
        int rows, width, height, becomesWidth, becomesHeight;
    };
    for (const Case& c : {Case{2, 340, 100, 340, 100},
                          {1, 340, 100, 340, 73},
                          {2, 340, 20, 340, 73},
                          {0, 340, 500, 340, 73},
                          {1, 100, 73, 270, 73},
                          {1, 900, 73, 500, 73},
                          {1, -5, -5, 270, 73}}) {
        TableOf(c.rows);
        panel().ChangeWindowSize(c.width, c.height, true, false);
        EXPECT_EQ(panel().Width(), c.becomesWidth);
        EXPECT_EQ(panel().Height(), c.becomesHeight);
    }
}

TEST_F(PanelSizingTest, NewRowsGrowThePanelUntilTheScreenEnds) {
    struct Screen {
        int height;
        std::vector<std::pair<int, int>> heightAndMaximum;
    };
    for (const Screen& screen :
         {Screen{187, {{73, 0}, {73, 1}, {73, 2}}}, Screen{188, {{73, 0}, {146, 0}, {146, 1}}},
          Screen{260, {{73, 0}, {146, 0}, {146, 1}, {146, 2}}},
          Screen{261, {{73, 0}, {146, 0}, {219, 0}, {219, 1}}},
          Screen{334, {{73, 0}, {146, 0}, {219, 0}, {292, 0}, {292, 1}}}}) {
        machine.windows.screens = {{0, 0, 1280, screen.height}};
        TableOf(0);
        panel().LastDictcount = 0;
        panel().ChangeWindowSize(340, 73, true, true);
        for (const auto& [height, maximum] : screen.heightAndMaximum) {
            AddRows(1);
            EXPECT_EQ(panel().Height(), height) << screen.height;
            EXPECT_EQ(Maximum(), maximum) << screen.height;
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
    TableOf(10);
    panel().ChangeWindowSize(340, 146, true, true);
    panel().ScrollBar1->SetValue(8);
    TableOf(5);
    panel().ChangeWindowSize(340, 146, false, true);
    EXPECT_EQ(panel().ScrollBar1->Value(), 3);
    TableOf(10);
    panel().ChangeWindowSize(340, 146, false, true);
    EXPECT_EQ(panel().ScrollBar1->Value(), 3);
}

TEST_F(PanelSizingTest, AHeightThatClampsBackToTheLaidOutOneNeedsNoLayout) {
    AddRows(1);
    machine.windows.calls.clear();
    machine.windows.ChangeFromOutside({100, 100, 340, 300});
    machine.Advance();
    EXPECT_EQ(panel().Height(), 73);
    EXPECT_EQ(machine.windows.window->content.height, 73);
    // A width beyond the limit clamps to the laid-out one as well, and then stays as it is.
    panel().ChangeWindowSize(500, 73, false, false);
    machine.windows.ChangeFromOutside({100, 100, 600, 73});
    machine.Advance();
    EXPECT_EQ(panel().Width(), 600);
    EXPECT_EQ(panel().MyWindowEventList->Width(), 500);
}

TEST_F(PanelSizingTest, NothingFollowsTheEdgesWhileTheGripIsHeld) {
    AddRows(2);
    const platform::Rect grip = panel().Canvas1->Bounds();
    panel().indrag = true;
    machine.windows.ChangeFromOutside({100, 100, 400, 146});
    machine.Advance();
    EXPECT_EQ(panel().Canvas1->Bounds(), grip);
    EXPECT_EQ(panel().LastWidth, 340);
    panel().indrag = false;
    machine.windows.ChangeFromOutside({100, 100, 401, 146});
    machine.Advance();
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

/// The same history, however and whenever the window system tells the panel of its own sizes.
std::string EndOfHistory(SizeEcho echo) {
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
    std::string end;
    for (const int number : {panel.Width(), panel.Height(), panel.LastWidth, panel.LastHeight,
                             panel.ScrollBar1->Maximum(), panel.MyWindowEventList->Width(),
                             panel.MyWindowEventList->MyDict->Count()})
        end += std::to_string(number) + ' ';
    return end;
}

TEST(PanelSizing, HistoriesEndAlikeWithSizesToldAtOnceLateOrNever) {
    const std::string never = EndOfHistory(SizeEcho::Never);
    EXPECT_EQ(EndOfHistory(SizeEcho::AtOnce), never);
    EXPECT_EQ(EndOfHistory(SizeEcho::Late), never);
}

} // namespace
} // namespace kqu

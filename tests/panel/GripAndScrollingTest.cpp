#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

namespace kqu {
namespace {

using namespace simulation;

class GripAndScrollingTest : public testing::Test {
  protected:
    void SetUp() override {
        machine.Start();
        AddRows(1);
    }
    void AddRows(int count) {
        for (int i = 0; i < count; ++i)
            machine.centre.Post("KQS_disk." + std::to_string(++names_), "KQMS", {});
        machine.Advance(1ms);
    }
    /// Goes back to one row's height, whatever the number of rows.
    void ShowOneRow() { panel().ChangeWindowSize(340, 73, true, true); }
    [[nodiscard]] Window1& panel() { return machine.Panel(); }
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
    void Wheel(int deltaX, int deltaY, platform::Point inPanel = {100, 30}) {
        machine.windows.Wheel({panel().Left() + inPanel.x, panel().Top() + inPanel.y}, deltaX,
                              deltaY);
        machine.Advance();
    }

    SimulatedMachine machine;

  private:
    int names_ = 0;
};

TEST_F(GripAndScrollingTest, APressWithoutWayKeepsTheWidthAtEveryColumn) {
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

TEST_F(GripAndScrollingTest, HeightGoesByOneRowPerEventFromThePressedLine) {
    AddRows(9);
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

TEST_F(GripAndScrollingTest, EveryEventOfADragJudgesAnewAndMovesByOneRow) {
    const platform::Point start = OnGrip(8, 8);
    Press(start);
    // A new row grows the panel at once.
    AddRows(1);
    EXPECT_EQ(panel().Height(), 146);
    Move({start.x + 1, start.y});
    EXPECT_EQ(panel().Width(), 341);
    EXPECT_EQ(panel().Height(), 73);
    AddRows(8);
    ShowOneRow();
    // A pointer that runs ahead needs further events.
    Move({start.x, start.y + 600});
    machine.Advance(2s);
    EXPECT_EQ(panel().Height(), 146);
    Move({start.x, start.y + 601});
    EXPECT_EQ(panel().Height(), 219);
}

TEST_F(GripAndScrollingTest, OneTurnOfTheWheelIsOneRowWhateverItsSize) {
    Wheel(0, 1);
    EXPECT_EQ(panel().ScrollBar1->Value(), 0);
    AddRows(24);
    ShowOneRow();
    using Turn = std::tuple<int, int, int>;
    for (const auto& [deltaX, deltaY, value] :
         {Turn{0, 1, 1}, Turn{0, 7, 2}, Turn{0, 0, 2}, Turn{5, 0, 2}, Turn{0, -3, 1},
          Turn{0, -1, 0}, Turn{0, -1, 0}}) {
        Wheel(deltaX, deltaY);
        EXPECT_EQ(panel().ScrollBar1->Value(), value);
    }
    for (int i = 0; i < 40; ++i)
        Wheel(0, 1, {335, 20});
    EXPECT_EQ(panel().ScrollBar1->Value(), 24);
}

TEST_F(GripAndScrollingTest, TheScrollBarGoesByPagesAndFollowsItsThumb) {
    AddRows(24);
    ShowOneRow();
    const int left = panel().Left() + panel().ScrollBar1->Left();
    const auto pressTrack = [&](int y) {
        Press({left + 5, panel().Top() + y});
        Release();
        return panel().ScrollBar1->Value();
    };
    EXPECT_EQ(pressTrack(55), 20);
    EXPECT_EQ(pressTrack(55), 24);
    EXPECT_EQ(pressTrack(2), 4);
    // The thumb held and dragged: from one end to the other, live.
    panel().ScrollBar1->SetValue(0);
    const platform::Rect thumb = panel().ScrollBar1->Thumb();
    const platform::Point held{left + 5, panel().Top() + thumb.y + 4};
    Press(held);
    Move({held.x, held.y + 1});
    EXPECT_LE(panel().ScrollBar1->Value(), 1);
    Move({held.x, held.y + 200});
    EXPECT_EQ(panel().ScrollBar1->Value(), 24);
    Move({held.x + 90, held.y});
    EXPECT_EQ(panel().ScrollBar1->Value(), 0);
    Release();
    EXPECT_EQ(machine.windows.window->drags, 0);
}

TEST_F(GripAndScrollingTest, APressThatNoControlTakesDragsThePanel) {
    // On a row, and on the line that the list leaves free as well.
    for (const auto& [x, y] : {std::pair{100, 30}, {339, 20}}) {
        machine.windows.calls.clear();
        Press({panel().Left() + x, panel().Top() + y});
        EXPECT_EQ(machine.windows.calls.front(), "drag " + std::to_string(panel().Left() + x) +
                                                     ' ' + std::to_string(panel().Top() + y));
        EXPECT_FALSE(panel().indrag);
        Release();
    }
}

} // namespace
} // namespace kqu

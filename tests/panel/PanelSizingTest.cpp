#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kqu {
namespace {

using namespace simulation;

class PanelSizing : public testing::Test {
  protected:
    void Start(int screenHeight, int rows) {
        machine.windows.screens = {{0, 0, 1280, screenHeight}};
        machine.Start();
        while (rows-- > 0)
            Come();
    }
    void Come() {
        machine.PostScanner("KQS_disk." + std::to_string(next), std::to_string(next));
        ++next;
        machine.Advance();
    }
    void Die(int process) {
        machine.processes.living.erase(process);
        machine.Advance(3s);
    }
    /// "width height: list, bar, maximum" of what is laid out, whose other numbers follow.
    std::string Laid() {
        const Window1& p = machine.Panel();
        const Control &grip = *p.Canvas1, &bar = *p.ScrollBar1, &list = *p.MyWindowEventList;
        EXPECT_EQ((std::vector{grip.Left(), grip.Top(), bar.Height(), list.Height()}),
                  (std::vector{p.Width() - 18, p.Height() - 15, p.Height() - 15, p.Height()}));
        EXPECT_EQ(p.MaxHeight(), std::max(1, p.MyWindowEventList->MyDict->Count()) * 73);
        EXPECT_FALSE(machine.screenUpdates.AreHeld());
        std::string text = std::to_string(p.Width()) + " " + std::to_string(p.Height()) + ":";
        for (const int number : {list.Width(), bar.Left(), p.ScrollBar1->Maximum()})
            text += " " + std::to_string(number);
        return text;
    }

    SimulatedMachine machine;
    int next = 10;
};

TEST_F(PanelSizing, GoesByOneRowPastHalfARowAndLaysOutOnlyWhatIsNew) {
    Start(800, 3);
    int laidOut = 0;
    machine.functions.Set<functions::SizeWindow>([&](auto&&...) { ++laidOut; });
    struct Step {
        int width, height;
        bool exact, force;
        const char* laid;
        bool isNew;
    };
    for (const Step& step : {Step{340, 219, false, false, "340 219: 340 341 0", false},
                             {340, 219, false, true, "340 219: 340 341 0", true},
                             {269, 219 - 36, false, false, "270 219: 270 271 0", true},
                             {501, 219 - 37, false, false, "500 146: 489 489 1", true},
                             {500, -900, false, false, "500 73: 489 489 2", true},
                             {500, 73 + 36, false, false, "500 73: 489 489 2", false},
                             {500, 900, false, false, "500 146: 489 489 1", true},
                             {400, 900, true, false, "400 219: 400 401 0", true},
                             {400, 10, true, false, "400 73: 389 389 2", true},
                             {400, 100, true, false, "400 100: 389 389 2", true},
                             {400, 137, false, false, "400 173: 389 389 1", true}}) {
        laidOut = 0;
        machine.Panel().ChangeWindowSize(step.width, step.height, step.exact, step.force);
        EXPECT_EQ(laidOut > 0, step.isNew) << step.width << ' ' << step.height;
        EXPECT_EQ(Laid(), step.laid) << step.width << ' ' << step.height;
    }
    machine.Panel().ScrollBar1->SetValue(1);
    machine.Panel().ChangeWindowSize(400, 219, true, false);
    EXPECT_EQ(machine.Panel().ScrollBar1->Value(), 0);
}

TEST_F(PanelSizing, GrowsWithItsRowsWhereTheScreenHasRoom) {
    // The panel's top is at 42, and the second row would end at 188.
    Start(188, 2);
    EXPECT_EQ(Laid(), "340 146: 340 341 0");
    Come();
    EXPECT_EQ(Laid(), "340 146: 329 329 1");
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Tasks");
    // As many rows as it shows are left, then fewer.
    Die(11);
    EXPECT_EQ(Laid(), "340 146: 340 341 0");
    // The count is stale by now: it grows past the screen's end.
    Come();
    EXPECT_EQ(Laid(), "340 219: 340 341 0");
    Die(10);
    Die(12);
    EXPECT_EQ(Laid(), "340 73: 340 341 0");
    EXPECT_EQ(machine.Title(), "Brackwater Scheduled Task");
    // The last one takes the panel out of sight as it is.
    EXPECT_TRUE(machine.windows.window->IsVisible());
    Die(13);
    EXPECT_FALSE(machine.windows.window->IsVisible());
    EXPECT_EQ(machine.Panel().LastDictcount, 0);
    // When the grace is over a row is shown once more, and the program goes on.
    Come();
    machine.windows.calls.clear();
    machine.Advance(10s);
    const auto& calls = machine.windows.calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "alpha 1"), 1);
    EXPECT_FALSE(machine.HasEnded());
}

TEST_F(PanelSizing, IsShortOfRoomOnePixelBelow) {
    Start(187, 2);
    EXPECT_EQ(Laid(), "340 73: 329 329 1");
    machine.Panel().ScrollBar1->SetValue(1);
    Die(10);
    EXPECT_EQ(Laid(), "340 73: 340 341 0");
    EXPECT_EQ(machine.Panel().ScrollBar1->Value(), 0);
}

TEST_F(PanelSizing, TheGripDragsByThePointerAndTheEchoOfItIsLeftAlone) {
    machine.windows.echo = SizeEcho::Late;
    Start(800, 3);
    Window1& panel = machine.Panel();
    machine.windows.Press({panel.Left() + 330, panel.Top() + 210});
    machine.Advance();
    EXPECT_TRUE(panel.indrag);
    machine.windows.pointer = {panel.Left() + 400, panel.Top() + 100};
    machine.windows.Inject([](auto& owner) { owner.PointerMoved({400, 100}); });
    machine.Advance();
    EXPECT_EQ(Laid(), "410 146: 399 399 1");
    // From outside it is taken as it is until the release.
    machine.windows.ChangeFromOutside({panel.Left(), panel.Top(), 600, 146});
    machine.Advance();
    EXPECT_EQ(panel.Width(), 600);
    machine.windows.Release();
    machine.windows.ChangeFromOutside({panel.Left(), panel.Top(), 601, 146});
    machine.Advance();
    EXPECT_FALSE(panel.indrag);
    EXPECT_EQ(Laid(), "500 146: 489 489 1");
}

TEST_F(PanelSizing, TheWheelScrollsByARowOverTheList) {
    Start(120, 3);
    for (const auto& [y, deltaY, value] :
         {std::tuple{10, 5, 1}, {10, 1, 2}, {10, 1, 2}, {10, 0, 2}, {10, -9, 1}, {500, -1, 1}}) {
        machine.windows.Inject([y = y, deltaY = deltaY](auto& owner) {
            owner.WheelTurned({50, y}, 1, deltaY);
        });
        machine.Advance();
        EXPECT_EQ(machine.Panel().ScrollBar1->Value(), value);
    }
}

TEST_F(PanelSizing, ADragBeginsAtThePointerWithinSixteenBits) {
    machine.Start();
    for (const auto& [left, start] : {std::pair{-70000, -4434}, {100, 130}, {32767, -32739}}) {
        machine.Panel().SetLeft(left);
        machine.windows.calls.clear();
        EXPECT_FALSE(machine.Panel().Event_MouseDown(30, 8));
        EXPECT_EQ(machine.windows.calls.back(), "drag " + std::to_string(start) + " 50");
    }
}

TEST_F(PanelSizing, TheScrollBarGoesByPagesOfTwentyRowsAndWithItsThumb) {
    Start(120, 25);
    Window1& panel = machine.Panel();
    ASSERT_EQ(panel.ScrollBar1->Maximum(), 24);
    for (const auto& [line, value] : {std::pair{55, 20}, {55, 24}, {2, 4}}) {
        machine.windows.Press({panel.Left() + panel.ScrollBar1->Left() + 5, panel.Top() + line});
        machine.windows.Release();
        machine.Advance();
        EXPECT_EQ(panel.ScrollBar1->Value(), value);
    }
    const platform::Rect thumb = panel.ScrollBar1->Thumb();
    panel.ScrollBar1->SetHeight(204);
    panel.ScrollBar1->SetMaximum(9);
    panel.ScrollBar1->SetInSight(3);
    EXPECT_EQ(panel.ScrollBar1->Thumb().height, 200 / 4) << "three of twelve rows";
    panel.ChangeWindowSize(panel.Width(), panel.Height(), true, true);
    const platform::Point taken{panel.ScrollBar1->Left() + 5,
                                panel.ScrollBar1->Top() + thumb.y + 2};
    const auto moveBy = [&](int way) {
        machine.windows.Inject([=](auto& window) {
            window.PointerMoved({taken.x, taken.y + way});
        });
        machine.Advance();
    };
    machine.windows.Press({panel.Left() + taken.x, panel.Top() + taken.y});
    const int way = panel.ScrollBar1->Height() - thumb.height;
    for (const auto& [moved, value] : {std::pair{0, 4}, {way / 2, 16}, {way, 24}, {-way, 0}}) {
        moveBy(moved);
        EXPECT_NEAR(panel.ScrollBar1->Value(), value, 1) << moved;
    }
    machine.windows.Inject([=](auto& window) { window.ButtonReleased({taken.x, -100}); });
    moveBy(way);
    EXPECT_EQ(panel.ScrollBar1->Value(), 0) << "it was let go";
}

} // namespace
} // namespace kqu

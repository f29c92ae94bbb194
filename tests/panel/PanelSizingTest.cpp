#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <utility>

namespace kqu {
namespace {

using namespace simulation;

TEST(PanelSizing, ScreenUpdatesAreShownAsOneChange) {
    SimulatedMachine machine;
    machine.Start();
    machine.PostScanner("KQS_disk.1", "10");
    machine.Advance();
    const int before = machine.windows.window->presents;
    machine.screenUpdates.Disable();
    machine.Panel().ChangeWindowSize(400, 73, false, false);
    machine.Advance();
    EXPECT_EQ(machine.windows.window->presents, before);
    machine.screenUpdates.Enable();
    machine.Advance();
    EXPECT_EQ(machine.windows.window->presents, before + 1);
}

TEST(PanelSizing, ADragBeginsAtThePointerWithinSixteenBits) {
    SimulatedMachine machine;
    machine.Start();
    for (const auto& [left, start] : {std::pair{-70000, -4434}, {100, 130}, {32767, -32739}}) {
        machine.Panel().SetLeft(left);
        machine.windows.calls.clear();
        EXPECT_FALSE(machine.Panel().Event_MouseDown(30, 8));
        EXPECT_EQ(machine.windows.calls.back(), "drag " + std::to_string(start) + " 50");
    }
}

TEST(PanelSizing, TheScrollBarGoesByPagesOfTwentyRows) {
    SimulatedMachine machine;
    machine.windows.screens = {{0, 0, 1280, 120}};
    machine.Start();
    for (int row = 0; row < 25; ++row) {
        machine.PostScanner("KQS_disk." + std::to_string(row), "10");
        machine.Advance();
    }
    Window1& panel = machine.Panel();
    ASSERT_EQ(panel.ScrollBar1->Maximum(), 24);
    for (const auto& [line, value] : {std::pair{55, 20}, {55, 24}, {2, 4}}) {
        machine.windows.Press({panel.Left() + panel.ScrollBar1->Left() + 5, panel.Top() + line});
        machine.windows.Release();
        machine.Advance();
        EXPECT_EQ(panel.ScrollBar1->Value(), value);
    }
}

} // namespace
} // namespace kqu

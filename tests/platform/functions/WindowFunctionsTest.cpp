#include "platform/functions/WindowFunctions.h"

#include "platform/functions/Functions.h"
#include "tests/support/SimulatedWindows.h"

#include <gtest/gtest.h>

namespace {

using namespace kqu;

struct NoOwner final : platform::NativeWindowOwner {
    void ContentChanged(const platform::Rect&) override {}
    void ButtonPressed(platform::Point) override {}
    void ButtonReleased(platform::Point) override {}
    void PointerMoved(platform::Point) override {}
    void WheelTurned(platform::Point, int, int) override {}
    void CloseRequested() override {}
    platform::Frame CurrentFrame() override { return {}; }
};

TEST(WindowFunctionsTest, EachGoesToTheWindowThatItIsCalledWithAndNoneToNone) {
    platform::FunctionTable table;
    platform::RegisterWindowFunctions(table);
    const auto setAlpha = table.Find<functions::SetWindowAlpha>();
    const auto changeAttributes = table.Find<functions::ChangeWindowAttributes>();
    const auto isCollapsed = table.Find<functions::IsWindowCollapsed>();
    const auto updateTile = table.Find<functions::UpdateCollapsedWindowDockTile>();
    const auto size = table.Find<functions::SizeWindow>();
    const auto drag = table.Find<functions::DragWindow>();
    ASSERT_TRUE(setAlpha && changeAttributes && isCollapsed && updateTile && size && drag);

    EXPECT_NE((*setAlpha)(nullptr, 1.0F), 0);
    EXPECT_NE((*changeAttributes)(nullptr, 8, 0), 0);
    EXPECT_NE((*updateTile)(nullptr), 0);
    EXPECT_FALSE((*isCollapsed)(nullptr));
    (*size)(nullptr, 1, 1, 0);
    (*drag)(nullptr, {1, 1}, nullptr);

    simulation::SimulatedWindows windows;
    NoOwner owner;
    const auto made = windows.MakeWindow({{0, 0, 340, 73}}, owner);
    windows.window->collapsed = true;
    windows.calls.clear();
    EXPECT_EQ((*setAlpha)(made.get(), 0.0F), 0);
    EXPECT_EQ((*changeAttributes)(made.get(), 6, 8), 0);
    EXPECT_TRUE((*isCollapsed)(made.get()));
    EXPECT_EQ((*updateTile)(made.get()), 0);
    (*size)(made.get(), 340, 146, 0);
    (*drag)(made.get(), {-5, 7}, nullptr);
    EXPECT_EQ(windows.calls,
              (std::vector<std::string>{"alpha 0", "attributes 6 8", "size 340 146", "drag -5 7"}));
    EXPECT_EQ(windows.window->tileUpdates, 1);
}

} // namespace

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
    simulation::SimulatedWindows windows;
    NoOwner owner;
    const auto made = windows.MakeWindow({{0, 0, 340, 73}}, owner);
    windows.window->collapsed = true;
    windows.calls.clear();
    for (platform::NativeWindow* window :
         {static_cast<platform::NativeWindow*>(nullptr), made.get()}) {
        const bool isNone = window == nullptr;
        EXPECT_EQ((*table.Find<functions::SetWindowAlpha>())(window, 0.0F) != 0, isNone);
        EXPECT_EQ((*table.Find<functions::ChangeWindowAttributes>())(window, 6, 8) != 0, isNone);
        EXPECT_NE((*table.Find<functions::IsWindowCollapsed>())(window), isNone);
        EXPECT_EQ((*table.Find<functions::UpdateCollapsedWindowDockTile>())(window) != 0, isNone);
        (*table.Find<functions::SizeWindow>())(window, 340, 146, 0);
        (*table.Find<functions::DragWindow>())(window, {-5, 7}, nullptr);
    }
    EXPECT_EQ(windows.calls,
              (std::vector<std::string>{"alpha 0", "attributes 6 8", "size 340 146", "drag -5 7"}));
    EXPECT_EQ(windows.window->tileUpdates, 1);
}

} // namespace

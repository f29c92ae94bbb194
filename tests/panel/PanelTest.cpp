#include "framework/files/ResourceFork.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

TEST(PanelOpening, RunsItsStepsInOrderWithTheFlagLast) {
    SimulatedMachine machine;
    machine.Start();
    std::vector<std::string>& calls = machine.windows.calls;
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("present"); });
    // The title that the layout names never reaches the window; the place comes
    // before the sizing, which brings 185 lines to the 73 of one row, by the window's property and
    // by the platform's own request; both take effect as one.
    EXPECT_EQ(calls, (std::vector<std::string>{"make", "attributes 8388608 0", "attributes 6 0",
                                               "position 0 42", "position 470 42", "size 340 73",
                                               "size 340 73", "title Brackwater Scheduled Task",
                                               "alpha 0", "show"}));
    EXPECT_EQ(machine.windows.windowsMade, 1);
    EXPECT_EQ(machine.Panel().MaxHeight() + machine.Panel().ScrollBar1->Maximum(), 73);
}

TEST(PanelOpening, TheStartGuardCountsFromTheCreationOfTheControls) {
    SimulatedMachine machine;
    // The opening takes three seconds, after the controls were made.
    machine.functions.Set<functions::ChangeWindowAttributes>(
        [&](platform::NativeWindow*, std::uint32_t attributes, std::uint32_t) {
            if (attributes == 6)
                machine.time.Pass(3s);
            return 0;
        });
    EXPECT_EQ(machine.RunToEnd(), 120.0);
}

TEST(PanelOpening, APaintBeforeTheOpeningIsDoneLeavesTheCanvasAlone) {
    SimulatedMachine machine;
    machine.Start();
    const auto buffer = NewPicture(340, 73, 32);
    buffer->Graphics().SetPixel(0, 0, RGB(1, 2, 3));
    for (const bool done : {false, true}) {
        machine.Panel().startupdone = done;
        machine.Panel().MyWindowEventList_Paint(buffer->Graphics());
        EXPECT_EQ(buffer->Graphics().Pixel(0, 0) == RGB(1, 2, 3), !done);
    }
}

TEST(PanelOpening, MissingArtworkEndsTheProgramQuietly) {
    SimulatedMachine machine;
    appResourceForkGetter()->Remove(168);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    appResourceForkGetter()->Restore();
}

TEST(PanelOpening, CanvasesKeepTheirSettingsAndMenuHandlersAreAskedFor) {
    SimulatedMachine machine;
    struct MenuWindow : Window {
        WindowLayout Layout() override { return {}; }
        void CreateControls() override { made = std::make_unique<Canvas>(*this, Settings()); }
        void AddMenuHandlers(Window& window) override {
            asked = made != nullptr && &window == this && !opened;
        }
        void Event_Open() override { opened = true; }
        static CanvasSettings Settings() {
            CanvasSettings settings;
            settings.UseFocusRing = settings.EraseBackground = false;
            settings.AcceptTabs = true;
            return settings;
        }
        using Window::Create;
        std::unique_ptr<Canvas> made;
        bool asked = false;
        bool opened = false;
    } window;
    window.Create();
    EXPECT_TRUE(window.asked && window.opened);
    EXPECT_TRUE(window.made->AcceptTabs);
    EXPECT_FALSE(window.made->UseFocusRing || window.made->EraseBackground);
}

class PanelGeometry : public testing::Test {
  protected:
    /// The window manager moves the panel, and the place is looked at a second later.
    void MoveTo(int left, int top) {
        machine.windows.ChangeFromOutside({left, top, 340, 73});
        machine.Advance(1100ms);
    }
    SimulatedMachine machine;
    const std::filesystem::path file =
        machine.root / "home/.config/com.brackwater.KQU_Messenger.plist";
};

TEST_F(PanelGeometry, TheFileIsReplacedAndNotWrittenOver) {
    machine.Start();
    MoveTo(100, 100);
    std::filesystem::create_hard_link(file, machine.root / "link");
    const std::string former = machine.ReadFile("/link");
    MoveTo(-5, 120);
    EXPECT_NE(former, "");
    EXPECT_EQ(machine.ReadFile("/link"), former);
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(PanelGeometry, ALinkThatLeadsNowhereIsNoFileAndIsReplaced) {
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink(machine.root / "nowhere", file);
    machine.Start();
    EXPECT_EQ(machine.Panel().Top(), 42);
    MoveTo(100, 100);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(file)));
    EXPECT_FALSE(std::filesystem::exists(machine.root / "nowhere"));
}

TEST_F(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtStart) {
    std::filesystem::create_directories(file);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
}

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

TEST(PanelSizing, TheScrollBarGoesByPagesOfTwentyRowsAndWithItsThumb) {
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

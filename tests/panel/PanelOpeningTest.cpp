#include "framework/files/ResourceFork.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "panel/Pictures.h"
#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

TEST(PanelOpening, MakesOnePanelWithItsNineControls) {
    SimulatedMachine machine;
    machine.Start();
    machine.PostScanner("KQS_disk.1", "10");
    machine.Advance(1s);
    EXPECT_EQ(machine.windows.windowsMade, 1);
    Window1& panel = machine.Panel();
    ASSERT_EQ(panel.Controls().size(), 3U);
    EXPECT_EQ(panel.Controls()[0]->Name(), "MyWindowEventList");
    EXPECT_EQ(panel.Controls()[1]->Name(), "ScrollBar1");
    EXPECT_EQ(panel.Controls()[2]->Name(), "Canvas1");
    for (const Control* control : panel.Controls()) {
        const ControlSettings& settings = control->Settings();
        EXPECT_EQ(settings.Index, 0x80000000U);
        EXPECT_FALSE(settings.LockLeft || settings.LockTop || settings.LockRight ||
                     settings.LockBottom);
        EXPECT_TRUE(settings.Visible && settings.Enabled && settings.AutoDeactivate);
    }
    const ScrollBar& bar = *panel.ScrollBar1;
    EXPECT_EQ((std::vector<int>{bar.Minimum(), bar.Value(), bar.LineStep(), bar.PageStep(),
                                bar.Top(), bar.Width()}),
              (std::vector<int>{0, 0, 1, 20, 0, 10}));
    EXPECT_EQ(&panel.DiskNotification->ownerWindow(), &panel);
    EXPECT_EQ(panel.MyTimer1->Period, 500);
    EXPECT_EQ(panel.MyTimer3->Period, 3000);
    EXPECT_EQ(panel.MyTimer3->Mode, TimerMode::Repeating);
    EXPECT_EQ(panel.Timer1->Period(), 120000);
    EXPECT_EQ(panel.Timer2->Period(), 1000);
    EXPECT_EQ(panel.Timer3->Period(), 10000);
    EXPECT_EQ(panel.Timer3->Mode(), TimerMode::Off);
}

TEST(PanelOpening, RunsItsStepsInOrderWithTheFlagLast) {
    SimulatedMachine machine;
    machine.Start();
    std::vector<std::string> calls = machine.windows.calls;
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [](const std::string& call) { return call.starts_with("present"); }),
                calls.end());
    // The title of the layout, with its leading blank, is never told to anybody; the place comes
    // before the sizing, which brings 185 lines to the 73 of one row, by the window's property and
    // by the platform's own request; both take effect as one.
    EXPECT_EQ(calls, (std::vector<std::string>{"make", "attributes 8388608 0", "attributes 6 0",
                                               "position 0 42", "position 470 42", "size 340 73",
                                               "size 340 73", "title Brackwater Scheduled Task",
                                               "alpha 0", "show"}));
    EXPECT_TRUE(machine.Panel().startupdone);
    EXPECT_EQ(machine.Panel().MyDragPict->Width(), Grow()->Width());
    EXPECT_EQ(machine.Panel().kCFDefragFileNameKey->Text(), "FileName");
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
    buffer->Graphics().SetForeColor(RGB(1, 2, 3));
    buffer->Graphics().FillRect(0, 0, 340, 73);
    machine.Panel().startupdone = false;
    machine.Panel().MyWindowEventList_Paint(buffer->Graphics());
    EXPECT_EQ(buffer->Graphics().Pixel(0, 0), RGB(1, 2, 3));
    machine.Panel().startupdone = true;
    machine.Panel().MyWindowEventList_Paint(buffer->Graphics());
    EXPECT_EQ(buffer->Graphics().Pixel(0, 0), RGB(255, 255, 255));
}

TEST(PanelOpening, ADeathOfTheArtworkEndsTheProgramQuietly) {
    SimulatedMachine machine;
    appResourceForkGetter()->Remove(168);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    appResourceForkGetter()->Restore();
}

TEST(PanelOpening, SiblingProductsTitleFromTheStart) {
    SimulatedMachine machine;
    machine.WriteFile(
        "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist",
        "<plist><dict/></plist>");
    machine.processes.commands["/bin/cat /Library/Application\\ Support/Brackwater\\ Utilities\\ "
                               "Support/BrackwaterPrefs.plist"] = [] {
        return "<key>ParentLocation</key>\n<string>/Applications/Marlstone Pro.app</string>\n";
    };
    machine.Start();
    EXPECT_EQ(machine.windows.window->title, "Marlstone Pro Scheduled Task");
}

} // namespace
} // namespace kqu

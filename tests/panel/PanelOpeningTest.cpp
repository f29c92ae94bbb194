#include "framework/files/ResourceFork.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

TEST(PanelOpening, RunsItsStepsInOrderWithTheFlagLast) {
    SimulatedMachine machine;
    machine.Start();
    std::vector<std::string>& calls = machine.windows.calls;
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("present"); });
    // The title of the layout, with its leading blank, is never told to anybody; the place comes
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

} // namespace
} // namespace kqu

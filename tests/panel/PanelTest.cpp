#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "framework/ui/ResourceFork.h"
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

TEST(PanelOpening, MenuHandlersAreAskedForOnceTheControlsAreThere) {
    SimulatedMachine machine;
    struct MenuWindow : Window {
        WindowLayout Layout() override { return {}; }
        void CreateControls() override { calls += "controls "; }
        void AddMenuHandlers(Window& /*window*/) override { calls += "menu "; }
        using Window::Create;
        std::string calls;
    } window;
    window.Create();
    EXPECT_EQ(window.calls, "controls menu ");
}

TEST(PanelOpening, MissingArtworkEndsTheProgramQuietly) {
    SimulatedMachine machine;
    appResourceForkGetter()->Remove(168);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
    appResourceForkGetter()->Restore();
}

class PanelGeometry : public testing::Test {
  protected:
    /// The window manager moves the panel, and the place is looked at a second later.
    void MoveTo(int left, int top) {
        machine.windows.ChangeFromOutside({left, top, 340, 73});
        machine.Advance(1100ms);
    }
    SimulatedMachine machine;
    const std::string name = "/home/.config/com.brackwater.KQU_Messenger.plist";
    const std::filesystem::path file = machine.root / name.substr(1);
};

TEST(PanelPlace, OpensWhereItWasLeftIfThatIsOnTheScreenAndElseInTheMiddle) {
    const auto number = [](const std::string& text) { return "<integer>" + text + "</integer>"; };
    const auto at = [&](const std::string& left, const std::string& top) {
        return number(left) + number(top) + number("300");
    };
    struct Case {
        std::string saved;
        platform::Rect place;
        int savedWidth;
    };
    constexpr platform::Rect usual{470, 42, 340, 73};
    for (const auto& [saved, place, savedWidth] :
         {Case{"", usual, 340},
          {at("1", "1"), {1, 1, 300, 73}, 300},
          {at("0", "1"), usual, 340},
          {at("1", "0"), usual, 340},
          {at("1269", "789"), {1269, 789, 300, 73}, 300},
          {at("1270", "789"), usual, 340},
          {at("1269", "790"), usual, 340},
          {at(" 7.9x", "1e1"), {7, 10, 300, 73}, 300},
          {"<key>a</key><INTEGER>9</Integer>\r" + number("8") + number("501"),
           {9, 8, 500, 73},
           501},
          {number("9") + number("8"), {9, 8, 270, 73}, 0}}) {
        SimulatedMachine started;
        if (!saved.empty())
            started.WriteFile("/home/.config/com.brackwater.KQU_Messenger.plist", saved);
        started.Start();
        EXPECT_EQ(started.windows.window->content, place) << saved;
        EXPECT_EQ(started.Panel().mywidth, savedWidth) << saved;
    }
}

TEST_F(PanelGeometry, IsSavedASecondAfterAChangeAndNotAgain) {
    machine.Start();
    MoveTo(100, -5);
    const std::string saved = machine.ReadFile(name);
    EXPECT_EQ(saved, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r"
                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\r"
                     "<plist version=\"1.0\">\r<dict>\r"
                     "\t<key>left</key>\r\t<integer>100</integer>\r"
                     "\t<key>top</key>\r\t<integer>-5</integer>\r"
                     "\t<key>width</key>\r\t<integer>340</integer>\r</dict>\r</plist>");
    std::filesystem::remove(file);
    machine.Advance(5s);
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing has changed";
    // Without a folder the change is let go.
    std::filesystem::remove_all(file.parent_path());
    MoveTo(7, 7);
    std::filesystem::create_directories(file.parent_path());
    machine.Advance(5s);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtStart) {
    std::filesystem::create_directories(file);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
}

} // namespace
} // namespace kqu

#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace kqu {
namespace {

using namespace simulation;

constexpr const char* geometryFile = "/home/.config/com.brackwater.KQU_Messenger.plist";

std::string Integers(const std::string& left, const std::string& top, const std::string& width) {
    return "<key>a</key><integer>" + left + "</integer><integer>" + top + "</integer><integer>" +
           width + "</integer>";
}

class PanelGeometry : public testing::Test {
  protected:
    /// The window manager moves the panel, and the place is looked at a second later.
    void MoveTo(int left, int top) {
        machine.windows.ChangeFromOutside({left, top, 340, 73});
        machine.Advance(1100ms);
    }
    SimulatedMachine machine;
    const std::filesystem::path file = machine.root / (geometryFile + 1);
};

TEST(PanelPlace, DefaultIsTheMiddleOfTheTopAndWritesNoFile) {
    using Case = std::pair<int, int>;
    for (const auto& [screen, left] :
         {Case{640, 150}, Case{1280, 470}, Case{1281, 470}, Case{2560, 1110}, Case{320, -10},
          Case{321, -9}, Case{333, -3}}) {
        SimulatedMachine machine;
        machine.windows.screens = {{0, 0, screen, 800}};
        machine.Start();
        machine.PostScanner("KQS_disk.1", "10");
        machine.Advance(5s);
        EXPECT_EQ(machine.windows.window->content, (platform::Rect{left, 42, 340, 73}));
        EXPECT_EQ(machine.ReadFile(geometryFile), "");
    }
}

TEST(PanelPlace, ASavedOneIsTakenWhenItLiesOnTheMainScreen) {
    const auto expect = [](const std::string& file, int left, int top, int width, int savedWidth) {
        SCOPED_TRACE(file);
        SimulatedMachine machine;
        machine.WriteFile(geometryFile, file);
        machine.Start();
        EXPECT_EQ(machine.windows.window->content, (platform::Rect{left, top, width, 73}));
        EXPECT_EQ(machine.Panel().mywidth, savedWidth);
        machine.Advance(2s);
        // A width that the sizing had to correct corrects the file as well.
        EXPECT_EQ(machine.ReadFile(geometryFile) != file, width != savedWidth);
    };
    expect(Integers("100", "200", "400"), 100, 200, 400, 400);
    expect(Integers("1", "1", "340"), 1, 1, 340, 340);
    expect(Integers("1269", "789", "340"), 1269, 789, 340, 340);
    expect(Integers("12abc", "8.9", "340"), 12, 8, 340, 340);
    expect(Integers("100", "200", "9999"), 100, 200, 500, 9999);
    expect(Integers("100", "200", "0"), 100, 200, 270, 0);
    expect("<integer>100</integer><integer>200", 100, 200, 270, 0);
    for (const auto& [left, top] :
         {std::pair{"1270", "200"}, {"100", "790"}, {"0", "200"}, {"100", "0"}, {"-5", "200"}})
        expect(Integers(left, top, "400"), 470, 42, 340, 340);
    for (const char* none : {"nonsense", ""})
        expect(none, 470, 42, 340, 340);
}

TEST_F(PanelGeometry, TheFileIsReplacedToTheByteAndOnlyAfterAMove) {
    machine.WriteFile(geometryFile, Integers("100", "100", "340"));
    std::filesystem::create_hard_link(file, machine.root / "link");
    machine.Start();
    MoveTo(-5, 120);
    EXPECT_EQ(machine.ReadFile("/link"), Integers("100", "100", "340"));
    const std::string expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r"
                                 "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\r"
                                 "<plist version=\"1.0\">\r<dict>\r"
                                 "\t<key>left</key>\r\t<integer>-5</integer>\r"
                                 "\t<key>top</key>\r\t<integer>120</integer>\r"
                                 "\t<key>width</key>\r\t<integer>340</integer>\r"
                                 "</dict>\r</plist>";
    EXPECT_EQ(machine.ReadFile(geometryFile), expected);
    // A height alone never writes.
    std::filesystem::remove(file);
    machine.PostScanner("KQS_disk.1", "10");
    machine.PostScanner("KQS_disk.2", "11");
    machine.Advance(3s);
    EXPECT_EQ(machine.Panel().Height(), 146);
    EXPECT_EQ(machine.ReadFile(geometryFile), "");
}

TEST_F(PanelGeometry, WithoutAFolderNothingIsWrittenAndNothingTriedAgain) {
    machine.Start();
    std::filesystem::remove_all(machine.root / "home");
    MoveTo(200, 100);
    EXPECT_EQ(machine.Panel().LastLeft, 200);
    std::filesystem::create_directories(file.parent_path());
    machine.Advance(3s);
    EXPECT_EQ(machine.ReadFile(geometryFile), "");
}

TEST_F(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtStart) {
    std::filesystem::create_directories(file);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
}

TEST_F(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtSaving) {
    machine.Start();
    std::filesystem::create_directories(file / "full");
    MoveTo(200, 100);
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

} // namespace
} // namespace kqu

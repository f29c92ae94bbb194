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

TEST(PanelGeometry, DefaultPlaceIsTheMiddleOfTheTopAndWritesNoFile) {
    struct Case {
        int screen, left;
    };
    for (const Case& c : {Case{640, 150},
                          {1280, 470},
                          {1281, 470},
                          {1366, 513},
                          {2560, 1110},
                          {320, -10},
                          {321, -9},
                          {333, -3}}) {
        SimulatedMachine machine;
        machine.windows.screens = {{0, 0, c.screen, 800}};
        machine.Start();
        EXPECT_EQ(machine.Panel().Left(), c.left) << c.screen;
        EXPECT_EQ(machine.Panel().Top(), 42);
        machine.PostScanner("KQS_disk.1", "10");
        machine.Advance(5s);
        EXPECT_FALSE(std::filesystem::exists(machine.root / (geometryFile + 1)));
    }
}

TEST(PanelGeometry, TheFileIsWrittenToTheByteAndOnlyAfterAChange) {
    SimulatedMachine machine;
    machine.Start();
    machine.PostScanner("KQS_disk.1", "10");
    machine.Advance(1s);
    machine.windows.ChangeFromOutside({-5, 120, 340, 73});
    machine.Advance(1100ms);
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
    std::filesystem::remove(machine.root / (geometryFile + 1));
    machine.PostScanner("KQS_disk.2", "11");
    machine.Advance(3s);
    EXPECT_EQ(machine.Panel().Height(), 146);
    EXPECT_EQ(machine.ReadFile(geometryFile), "");
}

TEST(PanelGeometry, TheFileIsReplacedAndNotOverwritten) {
    SimulatedMachine machine;
    machine.WriteFile(geometryFile, Integers("100", "100", "340"));
    std::filesystem::create_hard_link(machine.root / (geometryFile + 1), machine.root / "link");
    machine.Start();
    machine.windows.ChangeFromOutside({200, 100, 340, 73});
    machine.Advance(1100ms);
    EXPECT_NE(machine.ReadFile(geometryFile).find("<integer>200</integer>"), std::string::npos);
    EXPECT_EQ(machine.ReadFile("/link"), Integers("100", "100", "340"));
}

TEST(PanelGeometry, ASavedPlaceIsTakenWhenItLiesOnTheMainScreen) {
    struct Case {
        std::string file;
        int left, top, width, savedWidth;
    };
    const int middle = 470;
    for (const Case& c : {Case{Integers("100", "200", "400"), 100, 200, 400, 400},
                          {Integers("1", "1", "340"), 1, 1, 340, 340},
                          {Integers("1269", "789", "340"), 1269, 789, 340, 340},
                          {Integers("1270", "200", "400"), middle, 42, 340, 340},
                          {Integers("100", "790", "400"), middle, 42, 340, 340},
                          {Integers("0", "200", "400"), middle, 42, 340, 340},
                          {Integers("100", "0", "400"), middle, 42, 340, 340},
                          {Integers("-5", "200", "400"), middle, 42, 340, 340},
                          {Integers("12abc", "8.9", "340"), 12, 8, 340, 340},
                          {Integers("100", "200", "9999"), 100, 200, 500, 9999},
                          {Integers("100", "200", "0"), 100, 200, 270, 0},
                          {"<integer>100</integer><integer>200", 100, 200, 270, 0},
                          {"nonsense", middle, 42, 340, 340},
                          {"", middle, 42, 340, 340}}) {
        SimulatedMachine machine;
        machine.WriteFile(geometryFile, c.file);
        machine.Start();
        const Window1& panel = machine.Panel();
        EXPECT_EQ(panel.Left(), c.left) << c.file;
        EXPECT_EQ(panel.Top(), c.top) << c.file;
        EXPECT_EQ(panel.Width(), c.width) << c.file;
        EXPECT_EQ(panel.mywidth, c.savedWidth) << c.file;
        machine.Advance(2s);
        // A width that the sizing had to correct corrects the file as well.
        EXPECT_EQ(machine.ReadFile(geometryFile) != c.file, c.width != c.savedWidth) << c.file;
    }
}

TEST(PanelGeometry, WithoutAFolderNothingIsWrittenAndNothingTriedAgain) {
    SimulatedMachine machine;
    machine.Start();
    std::filesystem::remove_all(machine.root / "home");
    machine.windows.ChangeFromOutside({200, 100, 340, 73});
    machine.Advance(1100ms);
    EXPECT_EQ(machine.Panel().LastLeft, 200);
    std::filesystem::create_directories(machine.root / "home/.config");
    machine.Advance(3s);
    EXPECT_EQ(machine.ReadFile(geometryFile), "");
}

TEST(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtStartAndAtSaving) {
    {
        SimulatedMachine machine;
        std::filesystem::create_directories(machine.root / (geometryFile + 1));
        machine.Start();
        EXPECT_TRUE(machine.HasEnded());
    }
    SimulatedMachine machine;
    machine.Start();
    std::filesystem::create_directories(machine.root / (geometryFile + 1) / "full");
    machine.windows.ChangeFromOutside({200, 100, 340, 73});
    machine.Advance(1100ms);
    EXPECT_TRUE(machine.HasEnded());
    EXPECT_EQ(machine.app->ExitStatus(), 0);
}

} // namespace
} // namespace kqu

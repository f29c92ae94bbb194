#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;

struct ShellTest : testing::Test {
    /// What the command prints.
    void Prints(const std::string& command, const std::string& text) {
        machine.processes.commands[command] = [text] { return text; };
    }
    SimulatedMachine machine;
};

TEST_F(ShellTest, OutputIsTakenInChunksThatEndAtAPairOfNuls) {
    const std::string nul(1, '\0'), x(2047, 'x');
    const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                         {"one\ntwo\r\n\xFF", "one\ntwo\r\n\xFF"},
                                                         {"a" + nul + "b" + nul, "a" + nul + "b"},
                                                         {"a" + nul + nul + "b", "a"},
                                                         {x + "xy", x + "xy"},
                                                         {x + nul + "y", x + nul + "y"},
                                                         {"a" + nul + nul + x + "b", "axxb"}};
    for (const auto& [printed, text] : cases) {
        Prints("x", printed);
        EXPECT_EQ(Module1.GetShell("x", false), text);
        EXPECT_EQ(Module1.GetShell("x", true).find('\n'), std::string::npos);
    }
    Prints("x", "1\n\r2");
    EXPECT_EQ(Module1.GetShell("x", true), "1\r\r2");
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST_F(ShellTest, AProcessIsListedByItsWholeNumber) {
    struct Case {
        const char* printed;
        std::int32_t process;
        bool isListed;
    };
    for (const auto& [printed, process, isListed] : {Case{"  PID\n    1\n   12\n", 12, true},
                                                     {"  PID\n    1\n   12\n", 1, true},
                                                     {"  PID\n    1\n   12\n", 2, false},
                                                     {"PID\n123\n", 23, false},
                                                     {"PID\n 12", 12, false},
                                                     {"12\n", 12, false},
                                                     {"PID\n-1\n", -1, true},
                                                     {"", 0, false}}) {
        Prints("/bin/ps -ax -o 'pid'", printed);
        EXPECT_EQ(machine.Panel().IsPIDProcessRunning(process), isListed) << printed << process;
    }
}

TEST_F(ShellTest, ANotebookDrawsFromItsBattery) {
    for (const auto& [printed, isNotebook] : {std::pair{"Now drawing from 'BATTERY power'\n", true},
                                              {"Battery\nPower", false},
                                              {"AC Power", false}}) {
        Prints("pmset -g", printed);
        EXPECT_EQ(Module1.CheckNoteBook(), isNotebook) << printed;
    }
}

TEST_F(ShellTest, TheSuiteIsOfTheFamilyThatItsLocationNames) {
    const std::string file = "BrackwaterPrefs.plist", key = "<key>ParentLocation</key>";
    const std::string cat = R"(/bin/cat /Library/Application\ Support/Brackwater\ Utilities\ )"
                            "Support/" +
                            file;
    const std::string sibling = "<string>/Applications/Marlstone Pro.app</string>";
    const std::pair<std::string, bool> cases[] = {
        {key + "\n\t" + sibling + "\n", true},
        {"<dict>\r" + key + "\r" + sibling, true},
        {"\n<KEY>parentlocation</KEY>\r<STRING>x</string>", true},
        {"", false},
        {key + sibling, false},
        // A single line end at the very start does not count as the file's.
        {key + "\n<string>/Applications/BRACKWATER Utilities.app</string>", false},
        {key + "\n<string>/Brackwater/Marlstone</string>", true},
        {key + "\n<string>/Marlstone/Brack.appwater</string>", false},
        {key + "\n<string>/Marlstone/.app.APP</string>", false},
        {key + "\n<string></string>" + sibling, false},
        {key + "\n<integer>5</integer>" + sibling, true},
        {"a" + key + "\nx" + key + "\n" + sibling, false},
        {key + "\n" + sibling + std::string(1 << 20, ' '), false}};
    for (const auto& [text, isSibling] : cases) {
        machine.WriteFile("/Library/Application Support/Brackwater Utilities Support/" + file,
                          text);
        Prints(cat, text);
        Module1.ParentIsMarlstone = !isSibling;
        machine.app->GetParentApp();
        EXPECT_EQ(Module1.ParentIsMarlstone, isSibling) << text;
    }
}

} // namespace
} // namespace kqu

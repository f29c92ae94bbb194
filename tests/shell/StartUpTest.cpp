#include "framework/files/KnownFolders.h"
#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

constexpr const char* preferences =
    "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";
const std::string catCommand = "/bin/cat /Library/Application\\ Support/Brackwater\\ Utilities\\ "
                               "Support/BrackwaterPrefs.plist";

TEST(StartUp, AnOldSystemLetsThePanelBeCollapsed) {
    const std::pair<std::int32_t, int> cases[] = {{0x1038, 3}, {0x1039, 3}, {0x1040, 2}};
    for (const auto& [version, attributes] : cases) {
        SimulatedMachine machine;
        machine.systemVersion = version;
        machine.Start();
        const auto& calls = machine.windows.calls;
        EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                                [](const auto& call) { return call.starts_with("attributes"); }),
                  attributes);
        EXPECT_EQ(Module1.TenThreeOrLater, version > 0x1038);
    }
}

TEST(StartUp, BecomesTheOwnerOfTheConsole) {
    for (const std::uint32_t owner : {1000U, 0U, 2147483647U, 2147483648U, 0xFFFFFFFFU}) {
        SimulatedMachine machine;
        machine.consoleOwner = owner;
        machine.functions.Set<functions::seteuid>([&](std::uint32_t user) {
            machine.identityCalls.push_back("seteuid " + std::to_string(user));
            // Refused; nobody minds.
            return -1;
        });
        machine.Start();
        // One that is no whole number of that size is nobody.
        const bool isUser = owner <= 2147483647U;
        const std::string user = std::to_string(owner);
        EXPECT_EQ(machine.identityCalls, isUser ? (std::vector{"seteuid " + user, "setuid " + user})
                                                : std::vector<std::string>());
        EXPECT_EQ(machine.app->MyUID, isUser ? static_cast<std::int32_t>(owner) : 4242);
        EXPECT_FALSE(machine.HasEnded());
    }
}

TEST(StartUp, StepsComeInTheirOrder) {
    SimulatedMachine machine;
    machine.WriteFile(preferences, "<plist/>");
    std::vector<std::string> steps;
    const auto note = [&](const std::string& step) { steps.push_back(step); };
    machine.functions.Set<functions::Gestalt>([&](std::string_view, std::int32_t&) {
        note("version");
        return false;
    });
    machine.functions.Set<functions::setuid>([&](std::uint32_t) {
        note("identity");
        return 0;
    });
    machine.processes.commands[catCommand] = [&] {
        note("cat");
        return std::string();
    };
    machine.processes.commands["pmset -g"] = [&] {
        note("pmset");
        EXPECT_FALSE(machine.power.IsListenedTo());
        EXPECT_EQ(machine.windows.windowsMade, 0);
        // Read only afterwards.
        machine.WriteFile(preferences, "<plist><dict><key>SleepOnAC</key><true/></dict></plist>");
        return std::string("Now drawing from 'battery power'\n");
    };
    machine.functions.Set<functions::ChangeWindowAttributes>(
        [&](platform::NativeWindow*, std::uint32_t, std::uint32_t) {
            note(machine.power.IsListenedTo() ? "opening" : "opening without power messages");
            EXPECT_FALSE(machine.app->WasWin1);
            return 0;
        });
    machine.Start();
    EXPECT_EQ(steps, (std::vector<std::string>{"version", "identity", "cat", "pmset", "opening",
                                               "opening", "opening"}));
    EXPECT_TRUE(Module1.isNoteBook && Module1.SleepOnAC);
    EXPECT_TRUE(machine.app->WasWin1);
    const auto& calls = machine.windows.calls;
    ASSERT_GE(calls.size(), 2U);
    // Transparent before it is shown.
    EXPECT_LT(std::find(calls.begin(), calls.end(), "alpha 0"),
              std::find(calls.begin(), calls.end(), "show"));
    EXPECT_EQ(machine.processes.started, (std::vector<std::string>{catCommand, "pmset -g"}));
}

TEST(StartUp, AFunctionThatIsMissingEndsTheProgramWithStatusZero) {
    const auto endsWithout = [](const auto& remove, int windows) {
        SimulatedMachine machine;
        remove(machine.functions);
        machine.Start();
        EXPECT_TRUE(machine.HasEnded());
        EXPECT_EQ(machine.app->ExitStatus(), 0);
        EXPECT_EQ(machine.windows.windowsMade, windows);
        EXPECT_FALSE(machine.windows.window != nullptr && machine.windows.window->IsVisible() &&
                     machine.windows.window->presents > 0);
    };
    using Table = platform::FunctionTable;
    // Found before the panel is first mentioned: no window is ever made.
    endsWithout([](Table& table) { table.Remove<functions::SetWindowAlpha>(); }, 0);
    endsWithout([](Table& table) { table.Remove<functions::Gestalt>(); }, 0);
    endsWithout([](Table& table) { table.Remove<functions::popen>(); }, 0);
    endsWithout([](Table& table) { table.Remove<functions::ChangeWindowAttributes>(); }, 1);
    endsWithout([](Table& table) { table.Remove<functions::SizeWindow>(); }, 1);
}

TEST(StartUp, BrokenPowerPreferencesEndTheProgramAndMissingOnesDoNot) {
    const std::string head = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
    const std::string folder = "a folder and no file";
    struct Case {
        std::string list;
        bool ends;
        bool prevent, onAC, onBatt;
    };
    for (const Case& c :
         {Case{"<dict/>", false, true, false, true},
          {folder, false, true, false, true},
          {"<dict><key>SleepOnAC</key><true/></dict>", false, true, true, true},
          {"<dict><key>sleeponac</key><true/></dict>", false, true, false, true},
          {"<dict><key>PreventScheduleOnBatt</key><false/><key>SleepOnBatt</key><false/></dict>",
           false, false, false, false},
          {"<dict><key>SleepOnBatt</key><integer>1</integer></dict>", true, true, false, true},
          {"<array/>", true, true, false, true},
          {"<dict><key>SleepOnAC</key><true/>", false, true, false, true}}) {
        SimulatedMachine machine;
        if (c.list == folder)
            std::filesystem::create_directories(machine.root / (preferences + 1));
        else
            machine.WriteFile(preferences, head + c.list + "</plist>");
        machine.Start();
        EXPECT_EQ(machine.HasEnded(), c.ends) << c.list;
        EXPECT_EQ(machine.windows.windowsMade, c.ends ? 0 : 1) << c.list;
        EXPECT_EQ(machine.app->ExitStatus(), 0);
        EXPECT_EQ(Module1.PreventScheduleOnBatt, c.prevent) << c.list;
        EXPECT_EQ(Module1.SleepOnAC, c.onAC) << c.list;
        EXPECT_EQ(Module1.SleepOnBatt, c.onBatt) << c.list;
    }
}

TEST(BundleDescription, GivesTextsAndTheWordNilForEverythingElse) {
    SimulatedMachine machine;
    EXPECT_EQ(machine.app->GetPlistValueForKey("Name"), "nil");
    machine.WriteFile(BundleFolder()->AbsolutePath() + "/Info.plist",
                      "<plist version=\"1.0\"><dict><key>Name</key><string>KQU</string>"
                      "<key>Number</key><integer>5</integer></dict></plist>");
    EXPECT_EQ(machine.app->GetPlistValueForKey("Name"), "KQU");
    for (const char* key : {"Number", "name", "absent", ""})
        EXPECT_EQ(machine.app->GetPlistValueForKey(key), "nil") << key;
}

} // namespace
} // namespace kqu

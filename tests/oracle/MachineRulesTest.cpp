#include "framework/values/Text.h"
#include "platform/functions/Functions.h"
#include "tests/oracle/Random.h"
#include "tests/oracle/Rules.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kqu::oracle {
namespace {

using simulation::SimulatedMachine;

constexpr const char* placeFile = "/home/.config/com.brackwater.KQU_Messenger.plist";
constexpr const char* preferences =
    "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";
const std::string catCommand = "/bin/cat /Library/Application\\ Support/Brackwater\\ Utilities\\ "
                               "Support/BrackwaterPrefs.plist";
const Texts numberPieces = {"0",   "1",    "9", "25", "400", ".",   ".",   "-",  "+", "e", "E2",
                            "e-3", "e400", " ", "\t", "x",   "inf", "nan", "0x", ",", "%"};

TEST(MachineRules, Texts) {
    ForCases(2500, [](Random& random) {
        const std::string text = random.Text(oddPieces, 8);
        const std::string part = random.Text(oddPieces, random.OneIn(3) ? 2 : 1);
        const std::string by = random.Text(oddPieces, 2);
        EXPECT_EQ(InStr(text, part), static_cast<int>(Place(text, part))) << text << '|' << part;
        EXPECT_EQ(EqualsIgnoringCase(text, by), Same(text, by)) << text << '|' << by;
        EXPECT_EQ(EqualsIgnoringCase(part, by), Same(part, by)) << part << '|' << by;
        EXPECT_EQ(ReplaceAll(text, part, by), Replaced(text, part, by)) << text << '|' << part;
        const int fields = static_cast<int>(Fields(text, part).size());
        EXPECT_EQ(CountFields(text, part), fields) << text << '|' << part;
        for (int field = 0; field <= fields + 1; ++field)
            EXPECT_EQ(NthField(text, part, field),
                      Field(text, part, static_cast<std::size_t>(field)))
                << text << '|' << part << '|' << field;
        const std::string number = random.Text(numberPieces, 6);
        EXPECT_EQ(kqu::Val(number), Val(number)) << number;
        const double near = random.Between(-40000, 40000) / random.Of<double>({1, 8, 200, 1000});
        for (const double value : {near, std::nextafter(near, 1e9), std::nextafter(near, -1e9),
                                   std::ldexp(near, random.Between(-60, 200))}) {
            EXPECT_EQ(Format(value, "##0.00"), Rounded(value, 2)) << value;
            EXPECT_EQ(Format(value, "#"), Rounded(value, 0)) << value;
        }
    });
}

TEST(MachineRules, ShellAndLiveness) {
    SimulatedMachine machine;
    std::string printed;
    for (const char* command : {"x", "/bin/ps -ax -o 'pid'", "pmset -g"})
        machine.processes.commands[command] = [&] { return printed; };
    ForCases(300, [&](Random& random) {
        printed = std::string(static_cast<std::size_t>(
                                  std::max(0, 2048 * random.Between(0, 3) + random.Between(-4, 4))),
                              'x');
        for (int odd = random.Between(0, 5); odd > 0 && !printed.empty(); --odd) {
            const int last = static_cast<int>(printed.size()) - 1;
            const int place = random.OneIn(2) ? random.Between(0, last) : std::min(last, 2047);
            printed.replace(static_cast<std::size_t>(place), 1,
                            random.Of<std::string>({"\n", "\r\n", std::string(1, '\0'),
                                                    std::string(2, '\0'), "\xC3\xA4"}));
        }
        for (const bool returns : {false, true})
            EXPECT_EQ(Module1.GetShell("x", returns), ShellText(printed, returns));
    });
    ForCases(1500, [&](Random& random) {
        const std::int32_t wanted =
            random.Of<std::int32_t>({12, 123, 1, 0, -1, 4194304, 2147483647, -2147483647 - 1});
        const std::string id = std::to_string(wanted);
        printed = random.Text({"  PID\n", "\n", " " + id, id, id + "\n", "\n" + id, " ", "3", "\t",
                               "\r", "  " + id + "\n", "12\n"},
                              6);
        EXPECT_EQ(machine.Panel().IsPIDProcessRunning(wanted), IsListed(wanted, printed))
            << printed << '|' << wanted;
        printed = random.Text({"battery", "Battery ", "POWER", "power", " ", "\n"}, 4);
        EXPECT_EQ(Module1.CheckNoteBook(), Place(ShellText(printed, true), "Battery Power") > 0);
    });
}

TEST(MachineRules, FlavourOfTheSuite) {
    SimulatedMachine machine;
    machine.WriteFile(preferences, "there");
    unsigned siblings = 0;
    constexpr unsigned cases = 1200;
    ForCases(cases, [&](Random& random) {
        const Texts ends = {"\n", "\r", "\r\n", "\n", "\r", " \n", "", "\n\n"};
        const auto mostly = [&](const std::string& usual) {
            return random.OneIn(12) ? random.Text(oddPieces, 3) : usual;
        };
        std::string file;
        for (int keys = random.Between(0, 2); keys >= 0; --keys)
            file += random.Text(oddPieces, 2) +
                    mostly(random.OneIn(3) ? "<KEY>parentlocation</key>"
                                           : "<key>ParentLocation</key>") +
                    random.Of(ends) + mostly("\t<string>") +
                    random.Text({"/", "/Applications/", "Marlstone", " Pro", ".app", ".APP", ".ap",
                                 "p", "Brack", "water", "BRACKWATER", "\u00C4", "\xFF"},
                                7) +
                    mostly(random.OneIn(3) ? "</STRING>" : "</string>") + random.Of(ends);
        machine.processes.commands[catCommand] = [&] { return file; };
        Module1.ParentIsMarlstone = random.OneIn(2);
        machine.app->GetParentApp();
        EXPECT_EQ(Module1.ParentIsMarlstone, IsSibling(file)) << file;
        siblings += IsSibling(file);
    });
    EXPECT_GE(siblings, cases / 6);
    EXPECT_LE(siblings, cases - cases / 6);
}

TEST(MachineRules, PlaceOfThePanel) {
    ForCases(120, [](Random& random) {
        SimulatedMachine machine;
        const int width = random.Between(300, 2600), height = random.Between(150, 1700);
        machine.windows.screens = {{0, 0, width, height}};
        const auto number = [&](int limit) {
            const int near = random.Of<int>({0, limit - 10, limit - 10, limit / 2});
            return std::to_string(near + random.Between(-1, 1)) +
                   random.Of<std::string>({"", "", ".9", "abc", "e1", " "});
        };
        std::string file;
        for (const int limit : {width, height, 270, 500})
            if (!random.OneIn(9))
                file += random.Text(oddPieces, 2) + "<integer>" +
                        (random.OneIn(9) ? "x" : number(limit)) +
                        (random.OneIn(9) ? "\r" : "</Integer>");
        if (!random.OneIn(9))
            machine.WriteFile(placeFile, file);
        else
            file.clear();
        machine.Start();
        const PanelPlace place = SavedPlace(file, width, height).value_or(DefaultPlace(width, 340));
        Window1& panel = machine.Panel();
        EXPECT_EQ(machine.windows.window->content,
                  (platform::Rect{place.left, place.top, std::clamp(place.width, 270, 500), 73}));
        EXPECT_TRUE((PanelPlace{panel.LastLeft, panel.LastTop, panel.mywidth}) == place) << file;
        // Kept where it was moved to, if it was and if there is a folder for it.
        const bool isMoved = random.OneIn(2), isGone = random.OneIn(6);
        if (isMoved)
            panel.SetLeft(random.Between(-3000, 3000));
        const PanelPlace now{panel.Left(), panel.Top(), panel.Width()};
        if (isGone)
            std::filesystem::remove_all(machine.root / "home");
        else
            std::filesystem::create_directories(machine.root / "home/.config");
        panel.Timer2_Action();
        EXPECT_EQ(machine.ReadFile(placeFile), isGone ? "" : now == place ? file : PlaceFile(now));
    });
}

TEST(MachineRules, AnswersToPowerMessages) {
    SimulatedMachine machine;
    machine.Start();
    Source answers[2];
    int asked = 0;
    machine.functions.Set<functions::IOPSCopyPowerSourcesInfo>([&] {
        machine.powerSource = answers[std::min(asked++, 1)];
        return machine.powerSource || asked % 2 == 0 ? 7 : 0;
    });
    int released = 0;
    machine.functions.Set<functions::CFRelease>([&](std::int32_t) { ++released; });
    ForCases(3000, [&](Random& random) {
        for (Source& answer : answers)
            answer = random.Of<Source>({"AC Power", "Battery Power", "UPS Power", "", "ac",
                                        "Battery Backup", std::nullopt, std::string(97, 'x') + "AC",
                                        std::string(98, 'x') + "AC"});
        if (random.OneIn(2))
            answers[1] = answers[0];
        asked = released = 0;
        EXPECT_EQ(Module1.BatteryPower(), IsBattery(answers[0])) << answers[0].value_or("none");
        // The name that nobody owns is released all the same, and the blob.
        EXPECT_EQ(released, answers[0] ? 2 : 0);
        const PowerSwitches switches{random.OneIn(2), random.OneIn(2), random.OneIn(2)};
        Module1.PreventScheduleOnBatt = switches.prevent;
        Module1.SleepOnBatt = switches.sleepOnBatt;
        Module1.SleepOnAC = switches.sleepOnAC;
        const std::uint32_t message =
            random.Of<std::uint32_t>({0xE0000240U, 0xE0000250U, 0xE0000270U, 0xE0000280U,
                                      0xE0000310U, 0xE0000300U, 0xE0000320U, 0x280U}) +
            (random.OneIn(9) ? 0x10U : 0U);
        auto& table = machine.Panel().MyWindowEventList->MyDict;
        table = random.OneIn(9) ? nullptr : std::make_shared<Dictionary>();
        const int rows = table == nullptr ? 0 : random.Between(0, 2);
        for (int row = 0; row < rows; ++row)
            table->SetValue(std::to_string(row), std::make_shared<Dictionary>());
        asked = 0;
        EXPECT_EQ(machine.power.Ask(message),
                  Objects(rows, message, switches, answers[0], answers[1]))
            << std::hex << message << ' ' << answers[0].value_or("none") << ", "
            << answers[1].value_or("none") << ' ' << switches.prevent << switches.sleepOnBatt
            << switches.sleepOnAC;
    });
}

} // namespace
} // namespace kqu::oracle

#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;
using Source = std::optional<std::string>;

class SleepNoteTest : public testing::Test {
  protected:
    SleepNoteTest() {
        machine.Start();
        machine.functions.Set<functions::IOPSCopyPowerSourcesInfo>([this] {
            machine.powerSource = answers.at(std::min(asked++, answers.size() - 1));
            return machine.powerSource == "no blob" ? 0 : machine.handles.AddText("");
        });
        machine.functions.Set<functions::CFRelease>([this](std::int32_t) { ++released; });
    }
    /// Whether the program objects to that message, with the switches PreventScheduleOnBatt,
    /// SleepOnBatt and SleepOnAC.
    bool Objects(unsigned switches, std::uint32_t message = 0xE0000270U) {
        Module1.PreventScheduleOnBatt = (switches & 4U) != 0;
        Module1.SleepOnBatt = (switches & 2U) != 0;
        Module1.SleepOnAC = (switches & 1U) != 0;
        asked = 0;
        return machine.power.Ask(message);
    }

    SimulatedMachine machine;
    std::vector<Source> answers;
    std::size_t asked = 0;
    int released = 0;
};

TEST_F(SleepNoteTest, EverySourceButMainsIsBattery) {
    const std::pair<Source, bool> cases[] = {{"AC Power", false},
                                             {"mains ac", false},
                                             {"Battery Power", true},
                                             {"UPS Power", true},
                                             {"", true},
                                             {std::nullopt, false},
                                             {"no blob", false},
                                             {std::string(97, 'x') + "AC", false},
                                             // Too long to be read.
                                             {std::string(98, 'x') + "AC", true}};
    for (const auto& [source, isBattery] : cases) {
        answers = {source};
        released = 0;
        EXPECT_EQ(Module1.BatteryPower(), isBattery) << source.value_or("none");
        EXPECT_EQ(released, source == "no blob" ? 0 : source ? 2 : 1) << source.value_or("none");
    }
    machine.functions.Remove<functions::IOPSCopyPowerSourcesInfo>();
    EXPECT_FALSE(Module1.BatteryPower());
}

TEST_F(SleepNoteTest, ObjectsAsTheSwitchesSayWhileTasksRun) {
    answers = {"AC Power"};
    EXPECT_FALSE(Objects(0)) << "nothing runs";
    machine.PostScanner("KQS_disk.1", "10");
    machine.Advance();
    const std::pair<const char*, const char*> cases[] = {{"AC Power", "10101010"},
                                                         {"Battery Power", "11100000"}};
    for (const auto& [source, objections] : cases)
        for (unsigned switches = 0; switches < 8; ++switches) {
            answers = {source};
            EXPECT_EQ(Objects(switches), objections[switches] == '1') << source << switches;
        }
    for (const std::uint32_t message :
         {0xE0000240U, 0xE0000250U, 0xE0000270U, 0xE0000280U, 0xE0000310U})
        EXPECT_TRUE(Objects(2, message));
    for (const std::uint32_t message : {0xE0000300U, 0xE0000320U, 0xE0000290U, 0x280U, 0U})
        EXPECT_FALSE(Objects(2, message) || Objects(0, message)) << message;
    // It is asked for afresh each time, and only where it makes a difference.
    answers = {"AC Power", "Battery Power"};
    EXPECT_TRUE(Objects(5));
    EXPECT_EQ(asked, 2U);
    EXPECT_FALSE(Objects(1));
    EXPECT_EQ(asked, 1U);
    machine.Panel().MyWindowEventList->MyDict = nullptr;
    EXPECT_FALSE(Objects(0));
}

} // namespace
} // namespace kqu

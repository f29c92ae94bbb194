#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kqu {
namespace {

using namespace simulation;

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

TEST_F(PanelGeometry, AFileThatCannotBeOpenedEndsTheProgramAtStart) {
    std::filesystem::create_directories(file);
    machine.Start();
    EXPECT_TRUE(machine.HasEnded());
}

} // namespace
} // namespace kqu

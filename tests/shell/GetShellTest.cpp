#include "platform/functions/Functions.h"
#include "platform/functions/Handles.h"
#include "platform/functions/ShellFunctions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace kqu {
namespace {

using namespace simulation;

/// Counts the looks of the event loop, and with them the pumps.
class PumpCounter final : public platform::EventSource {
  public:
    [[nodiscard]] pollfd Watch() const override { return {-1, 0, 0}; }
    bool Collect(platform::EventQueue&) override {
        ++pumps;
        return false;
    }
    int pumps = 0;
};

class GetShellTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Output(const std::string& printed, bool linefeedsToReturns = false) {
        machine.processes.commands["x"] = [&] { return printed; };
        return Module1.GetShell("x", linefeedsToReturns);
    }
    [[nodiscard]] bool IsRunning(std::int32_t pid, const std::string& list) {
        machine.processes.commands["/bin/ps -ax -o 'pid'"] = [&] { return list; };
        return machine.Panel().IsPIDProcessRunning(pid);
    }

    SimulatedMachine machine;
};

TEST_F(GetShellTest, OutputComesBackWholeWhateverItsLength) {
    for (const std::size_t length : {0U, 1U, 100U, 2048U, 3000U, 4096U, 10000U}) {
        const std::string printed(length, 'x');
        EXPECT_EQ(Output(printed), printed) << length;
    }
    // One byte short of a chunk leaves a single NUL of its fill, which is no end.
    EXPECT_EQ(Output(std::string(2047, 'x')), std::string(2047, 'x') + '\0');
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST_F(GetShellTest, PumpsOnceBeforeTheFirstReadAndOnceAfterEveryChunk) {
    PumpCounter counter;
    const auto watching = Runtime::Current().Loop().Watch(counter);
    for (const auto& [length, pumps] :
         {std::pair{0U, 2}, {100U, 2}, {2047U, 2}, {2048U, 3}, {5000U, 4}}) {
        counter.pumps = 0;
        static_cast<void>(Output(std::string(length, 'x')));
        EXPECT_EQ(counter.pumps, pumps) << length;
    }
    machine.functions.Set<functions::ferror>([](std::int32_t) { return 1; });
    counter.pumps = 0;
    EXPECT_EQ(Output(std::string(5000, 'x')).size(), 2048U);
    EXPECT_EQ(counter.pumps, 1);
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST_F(GetShellTest, ACommandThatCannotBeStartedReadsAsEmpty) {
    for (const std::int32_t handle : {0, -1}) {
        machine.functions.Set<functions::popen>(
            [handle](const std::string&, const char*) { return handle; });
        EXPECT_EQ(Module1.GetShell("x", true), "");
    }
}

TEST_F(GetShellTest, FunctionsAreLookedUpOnEveryPass) {
    int reads = 0;
    machine.processes.whileReading = [&] {
        if (++reads == 2)
            machine.functions.Remove<functions::feof>();
    };
    try {
        static_cast<void>(Output(std::string(5000, 'x')));
        FAIL() << "the missing function went unnoticed";
    } catch (const FunctionNotFoundException& error) {
        EXPECT_EQ(error.Function(), "feof");
        EXPECT_EQ(error.Library(), "System.framework");
    }
    EXPECT_EQ(reads, 2);
}

TEST_F(GetShellTest, TheSystemsOwnListTellsTheLivingFromTheDead) {
    platform::Handles handles;
    platform::RegisterShellFunctions(machine.functions, handles);
    EXPECT_TRUE(machine.Panel().IsPIDProcessRunning(getpid()));
    EXPECT_TRUE(machine.Panel().IsPIDProcessRunning(1));
    EXPECT_FALSE(machine.Panel().IsPIDProcessRunning(2147483647));
    EXPECT_EQ(Module1.GetShell("printf 'a\\nb'; exit 3", true), "a\rb");
}

} // namespace
} // namespace kqu

#include "platform/functions/Functions.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(GetShell, PumpsOnceBeforeTheFirstReadAndOnceAfterEveryChunk) {
    SimulatedMachine machine;
    std::string printed;
    machine.processes.commands["x"] = [&] { return printed; };
    PumpCounter counter;
    const auto watching = Runtime::Current().Loop().Watch(counter);
    for (const auto& [length, pumps] :
         {std::pair{0U, 2}, {100U, 2}, {2047U, 2}, {2048U, 3}, {5000U, 4}}) {
        counter.pumps = 0;
        printed.assign(length, 'x');
        EXPECT_EQ(Module1.GetShell("x", false).size(), length + (length == 2047));
        EXPECT_EQ(counter.pumps, pumps) << length;
    }
    machine.functions.Set<functions::ferror>([](std::int32_t) { return 1; });
    counter.pumps = 0;
    EXPECT_EQ(Module1.GetShell("x", false).size(), 2048U);
    EXPECT_EQ(counter.pumps, 1);
    EXPECT_EQ(machine.processes.openStreams, 0);
}

TEST(GetShell, ACommandThatCannotBeStartedReadsAsEmpty) {
    SimulatedMachine machine;
    for (const std::int32_t handle : {0, -1}) {
        machine.functions.Set<functions::popen>(
            [handle](const std::string&, const char*) { return handle; });
        EXPECT_EQ(Module1.GetShell("x", true), "");
    }
}

} // namespace
} // namespace kqu

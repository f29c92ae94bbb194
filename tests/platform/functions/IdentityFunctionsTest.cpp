#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

TEST(IdentityFunctionsTest, TheSystemTellsItsVersionAndNothingElse) {
    FunctionTable table;
    RegisterIdentityFunctions(table);
    const auto ask = *table.Find<functions::Gestalt>();
    std::int32_t value = 7;
    for (const char* selector : {"", "sys1", "SYSV", "sysv "})
        EXPECT_FALSE(ask(selector, value)) << selector;
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(ask("sysv", value));
    EXPECT_EQ(value, 0x1068);
}

} // namespace
} // namespace kqu::platform

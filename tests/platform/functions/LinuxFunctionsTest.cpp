#include "platform/functions/LinuxFunctions.h"
#include "platform/functions/Functions.h"

#include <gtest/gtest.h>

#include <set>

namespace kqu::platform {
namespace {

TEST(IdentityFunctions, TheSystemTellsItsVersionAndNothingElse) {
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

TEST(CoreFoundationFunctions, ReleasingEndsWhatIsOwnedAndNothingElse) {
    FunctionTable table;
    Handles handles;
    RegisterCoreFoundationFunctions(table, handles);
    const auto release = *table.Find<functions::CFRelease>();
    const auto unowned = handles.UnownedText("AC Power");
    const auto blob = handles.AddBlob("blob");
    const auto stream = handles.AddStream(Command::Start("true"));
    const auto first = handles.AddText("first");
    release(first);
    // Whatever comes next must not be hit by a second release of the first.
    const auto second = handles.AddText("second");
    EXPECT_EQ((std::set{0, unowned, blob, stream, first, second}).size(), 6U);
    for (const auto handle : {first, unowned, blob, blob, stream, 0, -1, 12345})
        release(handle);
    EXPECT_EQ(handles.Text(first), nullptr);
    EXPECT_EQ(handles.Blob(blob), nullptr);
    EXPECT_EQ(*handles.Text(second), "second");
    EXPECT_EQ(*handles.Text(unowned), "AC Power");
    EXPECT_NE(handles.Stream(stream), nullptr);
    EXPECT_EQ(handles.TakeStream(second), nullptr);
}

} // namespace
} // namespace kqu::platform

#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <gtest/gtest.h>

#include <set>

namespace kqu::platform {
namespace {

struct CoreFoundationFunctionsTest : testing::Test {
    CoreFoundationFunctionsTest() { RegisterCoreFoundationFunctions(table, handles); }
    FunctionTable table;
    Handles handles;
};

TEST_F(CoreFoundationFunctionsTest, ReleasingEndsWhatIsOwnedAndNothingElse) {
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

#include "platform/functions/CoreFoundationFunctions.h"

#include "platform/functions/Functions.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace kqu::platform {
namespace {

struct CoreFoundationFunctionsTest : testing::Test {
    CoreFoundationFunctionsTest() { RegisterCoreFoundationFunctions(table, handles); }
    FunctionTable table;
    Handles handles;
};

TEST_F(CoreFoundationFunctionsTest, ATextIsConvertedWholeOrNotAtAll) {
    constexpr std::uint32_t utf8 = 0x08000100;
    // Bytes count, not characters: two for each "ä".
    const auto text = handles.AddText("ää");
    for (const auto& getCString : {*table.Find<functions::CFStringGetCString>(),
                                   *table.Find<functions::CFStringGetCStringOfCarbon>()})
        for (const auto handle : {text, 0, -1, 12345, handles.AddBlob("blob")})
            for (const std::int32_t size : {5, 4, 1})
                for (const std::uint32_t encoding : {utf8, 0U}) {
                    // As long as it is said to be, so that a byte too many is found out.
                    std::vector<char> buffer(static_cast<std::size_t>(size), '?');
                    const bool fits = handle == text && size == 5 && encoding == utf8;
                    EXPECT_EQ(getCString(handle, buffer.data(), size, encoding), fits);
                    EXPECT_STREQ(buffer.data(), fits ? "ää" : "");
                    EXPECT_FALSE(getCString(handle, nullptr, 0, encoding));
                }
}

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

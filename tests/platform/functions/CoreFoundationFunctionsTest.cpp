#include "platform/functions/CoreFoundationFunctions.h"

#include "platform/functions/Functions.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace kqu::platform {
namespace {

constexpr std::uint32_t utf8 = 0x08000100;

TEST(CoreFoundationFunctionsTest, ATextIsConvertedWholeOrNotAtAll) {
    struct Case {
        std::string text;
        std::int32_t size;
        bool succeeds;
        std::uint32_t encoding = utf8;
    };
    FunctionTable table;
    Handles handles;
    RegisterCoreFoundationFunctions(table, handles);
    const std::vector both{*table.Find<functions::CFStringGetCString>(),
                           *table.Find<functions::CFStringGetCStringOfCarbon>()};
    // Bytes count, not characters: two for each "ä".
    for (const Case& c : std::vector<Case>{{"sda1", 5, true},
                                           {"sda1", 4, false},
                                           {"", 1, true},
                                           {"sda1", 1024, false, 0},
                                           {"ää", 5, true},
                                           {"ää", 4, false}})
        for (const auto& getCString : both) {
            // Exactly as long as it is said to be, so that a byte too many is found out.
            std::vector<char> buffer(static_cast<std::size_t>(c.size), '?');
            EXPECT_EQ(getCString(handles.AddText(c.text), buffer.data(), c.size, c.encoding),
                      c.succeeds);
            EXPECT_STREQ(buffer.data(), c.succeeds ? c.text.c_str() : "") << c.size;
        }
    for (const std::int32_t handle : {0, -1, 12345, handles.AddBlob("blob")}) {
        std::vector<char> buffer{'?', '?'};
        EXPECT_FALSE(both[0](handle, buffer.data(), 2, utf8));
        EXPECT_EQ(buffer, (std::vector{'\0', '?'}));
    }
    EXPECT_FALSE(both[0](handles.UnownedText("x"), nullptr, 0, utf8));
}

TEST(CoreFoundationFunctionsTest, ReleasingEndsWhatIsOwnedAndNothingElse) {
    FunctionTable table;
    Handles handles;
    RegisterCoreFoundationFunctions(table, handles);
    const auto release = *table.Find<functions::CFRelease>();
    const auto unowned = handles.UnownedText("AC Power");
    const auto blob = handles.AddBlob("blob");
    const auto stream = handles.AddStream(CommandStream(::popen("true", "re")));
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
    EXPECT_EQ(handles.UnownedText("AC Power"), unowned);
    EXPECT_NE(handles.Stream(stream), nullptr);
    EXPECT_EQ(handles.TakeStream(second), nullptr);
}

} // namespace
} // namespace kqu::platform

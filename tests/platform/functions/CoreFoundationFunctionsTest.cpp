#include "platform/functions/CoreFoundationFunctions.h"

#include "platform/functions/Functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace kqu::platform {
namespace {

constexpr std::uint32_t utf8 = 0x08000100;

TEST(CoreFoundationFunctionsTest, ATextIsConvertedWholeOrNotAtAll) {
    struct Case {
        std::string text;
        std::int32_t size;
        std::uint32_t encoding;
        bool succeeds;
    };
    const std::vector<Case> cases{
        {"sda1", 1024, utf8, true},
        {"sda1", 5, utf8, true},
        {"sda1", 4, utf8, false},
        {"", 1, utf8, true},
        {"sda1", 1024, 0, false},
        {std::string(1023, 'x'), 1024, utf8, true},
        {std::string(1024, 'x'), 1024, utf8, false},
        // Bytes count, not characters: two for each of these.
        {"ää", 5, utf8, true},
        {"ää", 4, utf8, false},
    };
    FunctionTable table;
    Handles handles;
    RegisterCoreFoundationFunctions(table, handles);
    const std::vector both{*table.Find<functions::CFStringGetCString>(),
                           *table.Find<functions::CFStringGetCStringOfCarbon>()};
    for (const Case& c : cases)
        for (const auto& getCString : both) {
            // Exactly as long as it is said to be, so that a byte too many is found out.
            std::vector<char> buffer(static_cast<std::size_t>(c.size), '?');
            const bool done =
                getCString(handles.AddText(c.text), buffer.data(), c.size, c.encoding);
            EXPECT_EQ(done, c.succeeds) << c.text << c.size;
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
    const auto owned = handles.AddText("owned");
    const auto unowned = handles.UnownedText("unowned");
    const auto blob = handles.AddBlob("blob");
    for (const auto handle : {owned, owned, unowned, blob, blob, 0, -1, 12345})
        release(handle);
    EXPECT_EQ(handles.Text(owned), nullptr);
    EXPECT_EQ(handles.Blob(blob), nullptr);
    EXPECT_EQ(*handles.Text(unowned), "unowned");
}

} // namespace
} // namespace kqu::platform

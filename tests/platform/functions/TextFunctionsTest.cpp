#include "platform/functions/TextFunctions.h"

#include "platform/functions/Functions.h"
#include "platform/text/TextLayout.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

TEST(TextFunctions, ShortenInPlaceMeasuredInTheSystemFont) {
    FunctionTable table;
    RegisterTextFunctions(table);
    const auto function = table.Find<functions::TruncateThemeText>();
    ASSERT_NE(function, nullptr);
    const std::string original = "A volume name that is a good deal too long.sparsebundle";
    struct Case {
        std::uint32_t code;
        std::int32_t width;
        bool keepsEnd;
        bool shortens;
    };
    for (const auto& [code, width, keepsEnd, shortens] :
         {Case{0x4000, 150, true, true}, Case{0, 150, false, true}, Case{0x4000, 150, true, true},
          Case{0x4000, 2000, true, false}, Case{0, 2000, true, false}}) {
        std::string text = original;
        bool truncated = !shortens;
        EXPECT_EQ((*function)(text, 0, 0, width, code, &truncated), 0);
        EXPECT_EQ(truncated, shortens);
        EXPECT_EQ(text == original, !shortens);
        EXPECT_EQ(text.ends_with("bundle"), keepsEnd) << text;
        EXPECT_LE(TextLayout::Shared().Width(text, 13), width);
        // Nothing smaller than the system font was measured: a letter more would not fit.
        const double slack = width - TextLayout::Shared().Width(text, 13);
        EXPECT_EQ(slack < 15, shortens);
    }
    std::string text = original;
    EXPECT_EQ((*function)(text, 0, 0, 150, 0x4000, nullptr), 0);
    EXPECT_NE(text, original);
}

} // namespace
} // namespace kqu::platform

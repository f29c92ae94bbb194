#include "platform/functions/TextFunctions.h"

#include "platform/functions/Functions.h"
#include "platform/text/TextLayout.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

TEST(TextFunctions, ShortenInPlaceMeasuredInTheSystemFont) {
    FunctionTable table;
    RegisterTextFunctions(table);
    const auto truncate = *table.Find<functions::TruncateThemeText>();
    const std::string original = "A volume name that is a good deal too long.sparsebundle";
    for (const std::uint32_t code : {0x4000U, 0U})
        for (const int width : {150, 2000}) {
            std::string text = original;
            bool truncated = width == 2000;
            EXPECT_EQ(truncate(text, 0, 0, width, code, &truncated), 0);
            EXPECT_EQ(truncated, width == 150);
            EXPECT_EQ(text == original, !truncated);
            EXPECT_EQ(text.ends_with("bundle"), code != 0 || !truncated) << text;
            // Nothing smaller than the system font was measured: a letter more would not fit.
            const double slack = width - TextLayout::Shared().Width(text, 13);
            EXPECT_GE(slack, 0);
            EXPECT_EQ(slack < 15, truncated);
            text = original;
            EXPECT_EQ(truncate(text, 0, 0, width, code, nullptr), 0);
            EXPECT_EQ(text == original, !truncated);
        }
}

} // namespace
} // namespace kqu::platform

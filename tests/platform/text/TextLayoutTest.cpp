#include "platform/text/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

constexpr int size = 11;

TextLayout& Layout() {
    return TextLayout::Shared();
}

TEST(TextLayout, AnyBytesAreOneLineOfBlanksAndReplacementCharacters) {
    const std::pair<std::string, std::string> cases[] = {
        {"<b>&amp;</b>", "<b>&amp;</b>"},
        {"two\nlines\r\n", "two lines  "},
        {std::string("a\0b", 3), "a b"},
        {"tab\tand\x1B\x7F", "tab and  "},
        {"\u2028\u2029\u0085", "   "},
        {"\xC3", "\uFFFD"},
        {"\xE6\x97", "\uFFFD\uFFFD"},
        {"\xE6\x97\xA5\xFF", "日\uFFFD"},
        {"\xC0\xAF\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"", ""},
    };
    for (const auto& [source, line] : cases) {
        const PlainText plain(source);
        EXPECT_EQ(plain.utf8, line);
        EXPECT_EQ(plain.places.back().inSource, source.size());
        EXPECT_EQ(plain.places.back().inLine, line.size());
        EXPECT_EQ(Layout().Width(source, size), Layout().Width(line, size));
    }
}

TEST(TextLayout, WidthsAreWholePixelsAndAddUp) {
    for (const char* text : {"Destination: ", "45.60 %", "日本語", "שלום", "x"}) {
        const double width = Layout().Width(text, size);
        EXPECT_GT(width, 0.0) << text;
        EXPECT_EQ(width, std::round(width)) << text;
    }
    EXPECT_EQ(Layout().Width("0123456789", size), 10 * Layout().Width("5", size));
    EXPECT_LT(Layout().Width("0123456789", size), Layout().Width("0123456789", 13));
}

TEST(TextLayout, InkStandsOnTheBaselineAtTheLeftAndStaysWithinReach) {
    const auto capital = Layout().Image("HEH", size, 0);
    EXPECT_EQ(capital->top + capital->height, 0);
    EXPECT_NEAR(capital->height, size * 0.73, 1);
    EXPECT_NEAR(capital->left, 1, 1);
    EXPECT_EQ(*std::max_element(capital->coverage.begin(), capital->coverage.end()), 255);
    // Right-to-left text starts at the left as well, and ends where its width says.
    const auto hebrew = Layout().Image("שלום עולם", size, 0);
    EXPECT_GE(hebrew->left, -1);
    EXPECT_NEAR(hebrew->left + hebrew->width, Layout().Width("שלום עולם", size), 2);
    std::string pile = "o";
    for (int i = 0; i < 200; ++i)
        pile += "\u0302\u0323";
    const auto image = Layout().Image(pile, size, 0);
    EXPECT_GE(image->top, -TextLayout::reach * size);
    EXPECT_LE(image->top + image->height, TextLayout::reach * size);
}

TEST(TextLayout, OddSizesAndLongTextsAreHarmless) {
    for (const int odd : {-2147483647, -1, 0, 1, 3, 2147483647})
        EXPECT_GE(Layout().Width("x", odd), 0.0) << odd;
    const std::string text(1000000, 'x');
    const std::string_view enough = TextLayout::Enough(text, 340);
    EXPECT_GT(Layout().WidthOnce(std::string(enough), size), 340);
    EXPECT_LT(enough.size(), 2000U);
    EXPECT_GT(TextLayout::Enough(text, -7).size(), 0U);
}

} // namespace
} // namespace kqu::platform

#include "platform/text/Truncation.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <vector>

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
}

constexpr int shortenedSize = 13;
const std::string ellipsis = "…";

/// Pieces that each stand for themselves: letters of several scripts, letters with marks, emoji
/// made of several characters, a control character and a byte that is no UTF-8.
std::vector<std::string> Clusters() {
    std::istringstream all("a|W|.| |é|n\u0303\u0323|日|ш|ع|א|\n|\xFF|\U0001F44D\U0001F3FD|"
                           "\U0001F469\u200D\U0001F469\u200D\U0001F467");
    std::vector<std::string> clusters;
    for (std::string one; std::getline(all, one, '|');)
        clusters.push_back(one);
    return clusters;
}

double WidthOf(const std::string& text) {
    return TextLayout::Shared().Width(text, shortenedSize);
}

std::string Shorten(const std::string& text, int limit, Giving giving = Giving::Middle) {
    return Truncated(TextLayout::Shared(), text, shortenedSize, limit, giving);
}

/// What stands before and behind the ellipsis.
std::pair<std::string, std::string> Halves(const std::string& shortened) {
    const std::size_t at = shortened.find(ellipsis);
    EXPECT_NE(at, std::string::npos) << shortened;
    return {shortened.substr(0, at), shortened.substr(at + ellipsis.size())};
}

TEST(Truncation, RemovesTheMinimumAtTheBoundsOfWholeCharacters) {
    std::mt19937 random(20240611);
    const auto clusters = Clusters();
    for (int round = 0; round < 400; ++round) {
        std::string text;
        std::vector<std::size_t> bounds{0};
        for (auto length = 1 + random() % 90; length > 0; --length) {
            text += clusters[random() % clusters.size()];
            bounds.push_back(text.size());
        }
        const int limit = 20 + static_cast<int>(random() % 400);
        const std::string shortened = Shorten(text, limit);
        SCOPED_TRACE(text + " -> " + shortened + " within " + std::to_string(limit));
        if (WidthOf(text) <= limit) {
            EXPECT_EQ(shortened, text);
            continue;
        }
        EXPECT_LE(WidthOf(shortened), limit);
        const auto [first, last] = Halves(shortened);
        ASSERT_TRUE(text.starts_with(first) && text.ends_with(last));
        const auto firstBound = std::find(bounds.begin(), bounds.end(), first.size());
        const auto lastBound = std::find(bounds.begin(), bounds.end(), text.size() - last.size());
        ASSERT_TRUE(firstBound != bounds.end() && lastBound != bounds.end());
        ASSERT_LT(firstBound, lastBound);
        if (lastBound - firstBound == 1)
            continue; // Putting back the only one that is gone gives the whole text.
        EXPECT_GT(WidthOf(text.substr(0, firstBound[1]) + ellipsis + last), limit);
        EXPECT_GT(WidthOf(first + ellipsis + text.substr(lastBound[-1])), limit);
    }
}

TEST(Truncation, KeepsTheSameFromBothEndsAndNothingWhereNotEvenTheEllipsisFits) {
    const auto [first, last] = Halves(Shorten(std::string(120, 'm'), 200));
    EXPECT_TRUE(first.size() == last.size() || first.size() == last.size() + 1);
    const std::string text = "The quick brown fox jumps over the lazy dog";
    EXPECT_GT(Shorten(text, 150, Giving::End).size(), 10U + ellipsis.size());
    for (const int limit : {-2147483647, 0, 5, 12, 13, 14})
        EXPECT_EQ(Shorten(text, limit).empty(), limit < WidthOf(ellipsis)) << limit;
    // Of a long text no more than its ends is looked at.
    const std::string wide(5000000, 'W');
    EXPECT_EQ(Shorten(wide, 310), Shorten(wide.substr(0, 1000), 310));
    std::string marks = "a";
    for (int mark = 0; mark < 200000; ++mark)
        marks += "\u0301";
    EXPECT_LT(Shorten(marks, 310).size(), 2000U);
}

} // namespace
} // namespace kqu::platform

#include "framework/values/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace kqu {
namespace {

TEST(Text, ValReadsTheLeadingDecimalNumberAndNothingElse) {
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        std::string text;
        double value;
    };
    for (const Case& c : {Case{"", 0},
                          {"abc", 0},
                          {"inf", 0},
                          {"nan", 0},
                          {"infinity", 0},
                          {"0x1F", 0},
                          {"12abc", 12},
                          {"-3.5%", -3.5},
                          {".5", 0.5},
                          {"5.", 5},
                          {"+7", 7},
                          {" \t7", 7},
                          {"- 7", 0},
                          {"1,5", 1},
                          {"1e3", 1000},
                          {"1e", 1},
                          {"1e+", 1},
                          {"2E-1x", 0.2},
                          {"--1", 0},
                          {".", 0},
                          {"1e400", infinity},
                          {"-1e400", -infinity},
                          {"1e-400", 0},
                          {"0.0001e400", infinity},
                          {std::string(400, '1') + "e-10", infinity},
                          {std::string(400, '1') + "e-399", 1.1111111111111112},
                          {"1e99999999999999999999", infinity},
                          {"1e-9223372036854775808", 0},
                          {"0e99999999999999999999", 0},
                          {"0.0", 0},
                          {std::string(400, '9'), infinity},
                          {"0." + std::string(400, '0') + "1", 0},
                          {std::string(5000, '0') + "42", 42}})
        EXPECT_EQ(Val(c.text), c.value) << c.text;
}

TEST(Text, SearchingIgnoresCaseInEveryScriptAndCountsBytesOfTheOriginal) {
    EXPECT_EQ(InStr("xx-kqs_DISK/7", "KQS_disk"), 4);
    EXPECT_EQ(InStr("abc", "d"), 0);
    EXPECT_EQ(InStr("abc", ""), 1);
    EXPECT_EQ(InStr("", "a"), 0);
    EXPECT_EQ(InStr("ÄÖÜ-x", "äöü"), 1);
    EXPECT_EQ(InStr("x\u00C4", "\u00E4"), 2);
    // Letters whose folded form has another length in bytes don't move what stands behind them.
    EXPECT_EQ(ReplaceAll("\u0130.appBrackwater", ".APP", ""), "\u0130Brackwater");
    EXPECT_EQ(ReplaceAll("\u212A.app\u212A", "k", "-"), "-.app-");
    EXPECT_TRUE(EqualsIgnoringCase("Straße", "STRAßE"));
    EXPECT_FALSE(EqualsIgnoringCase("Straße", "Strasse"));
    EXPECT_TRUE(EqualsIgnoringCase("ПРИВЕТ", "привет"));
    EXPECT_FALSE(EqualsIgnoringCase("abc", "ab"));
    EXPECT_FALSE(EqualsIgnoringCase("I", "\u0131"));
    EXPECT_TRUE(EqualsIgnoringCase("\u13A0 \u03C3 \u01C5", "\uAB70 \u03C2 \u01C4"));
    EXPECT_EQ(InStr("-.\u212A-.k.", ".k."), 7);
}

TEST(Text, BytesThatAreNoTextSurvive) {
    const std::string broken = "a\xFF\xC3/b\x80";
    EXPECT_EQ(ReplaceAll(broken, "/", "//"), "a\xFF\xC3//b\x80");
    EXPECT_EQ(NthField(broken, "/", 1), "a\xFF\xC3");
    EXPECT_TRUE(EqualsIgnoringCase(broken, "A\xFF\xC3/B\x80"));
    EXPECT_FALSE(EqualsIgnoringCase("\xFF", "\xFE"));
}

TEST(Text, ReplacingGoesOnceFromTheLeft) {
    EXPECT_EQ(ReplaceAll("a///b", "//", "/"), "a//b");
    EXPECT_EQ(ReplaceAll("aAaA", "aa", "a"), "aa");
    EXPECT_EQ(ReplaceAll("x", "", "y"), "x");
    EXPECT_EQ(ReplaceAll("the theleft", "THELEFT", "5"), "the 5");
}

TEST(Text, FieldsCountFromOneAndEndInEmptyOnes) {
    const std::string text = "a:B::c";
    const char* fields[] = {"", "a", "B", "", "c", "", ""};
    for (int number = 0; number < 7; ++number)
        EXPECT_EQ(NthField(text, ":", number), fields[number]) << number;
    EXPECT_EQ(CountFields(text, ":"), 4);
    EXPECT_EQ(CountFields("", ":"), 0);
    EXPECT_EQ(CountFields(":", ":"), 2);
    EXPECT_EQ(CountFields("abc", ""), 1);
    EXPECT_EQ(NthField("<KEY>x</key>y", "<key>", 2), "x</key>y");
    EXPECT_EQ(NthField("", ":", 1), "");
    EXPECT_EQ(NthField("x", ":", -1), "");
}

TEST(Text, FormatRoundsTiesAwayFromZero) {
    struct Case {
        double number;
        const char* mask;
        std::string text;
    };
    for (const Case& c : {Case{0, "##0.00", "0.00"},
                          {0.004, "##0.00", "0.00"},
                          {0.006, "##0.00", "0.01"},
                          {0.125, "##0.00", "0.13"},
                          {0.625, "##0.00", "0.63"},
                          {1.125, "##0.00", "1.13"},
                          {45.6, "##0.00", "45.60"},
                          {99.994, "##0.00", "99.99"},
                          {99.996, "##0.00", "100.00"},
                          {123.45, "##0.00", "123.45"},
                          {1234.5, "##0.00", "1234.50"},
                          {-1, "##0.00", "-1.00"},
                          {-0.004, "##0.00", "0.00"},
                          {-0.005, "##0.00", "-0.01"},
                          {0.3, "#", ""},
                          {0.5, "#", "1"},
                          {2.5, "#", "3"},
                          {37.6, "#", "38"},
                          {99.6, "#", "100"},
                          {0, "#", ""},
                          {1.5, "0.#", "1.5"},
                          {1.0, "0.#", "1"},
                          {7, "000", "007"}})
        EXPECT_EQ(Format(c.number, c.mask), c.text) << c.number << ' ' << c.mask;
    EXPECT_EQ(Format(1e300, "##0.00").size(), 304U);
    for (const double odd : {std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_LT(Format(odd, "##0.00").size(), 8U);
}

} // namespace
} // namespace kqu

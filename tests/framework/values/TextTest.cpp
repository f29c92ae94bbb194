#include "framework/values/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace kqu {
namespace {

TEST(Text, ValReadsTheLeadingDecimalNumberAndNothingElse) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char* none : {"", "abc", "inf", "nan", "infinity", "0x1F", "- 7", "--1", ".",
                             "1e-400", "1e-9223372036854775808", "0e99999999999999999999"})
        EXPECT_EQ(Val(none), 0) << none;
    for (const char* tooLarge : {"1e400", "0.0001e400", "1e99999999999999999999"}) {
        EXPECT_EQ(Val(tooLarge), infinity) << tooLarge;
        EXPECT_EQ(Val(std::string("-") + tooLarge), -infinity) << tooLarge;
    }
    using Case = std::pair<const char*, double>;
    for (const auto& [text, value] :
         {Case{"12abc", 12}, Case{"-3.5%", -3.5}, Case{".5", 0.5}, Case{"5.", 5}, Case{"+7", 7},
          Case{" \t7", 7}, Case{"1,5", 1}, Case{"1e3", 1000}, Case{"1e", 1}, Case{"1e+", 1},
          Case{"2E-1x", 0.2}})
        EXPECT_EQ(Val(text), value) << text;
    const std::string ones(400, '1');
    EXPECT_EQ(Val(ones + "e-10"), infinity);
    EXPECT_EQ(Val(ones + "e-399"), 1.1111111111111112);
    EXPECT_EQ(Val("0." + std::string(400, '0') + "1"), 0);
    EXPECT_EQ(Val(std::string(5000, '0') + "42"), 42);
}

TEST(Text, SearchingIgnoresCaseInEveryScriptAndCountsBytesOfTheOriginal) {
    using Search = std::tuple<const char*, const char*, int>;
    for (const auto& [text, part, place] :
         {Search{"xx-kqs_DISK/7", "KQS_disk", 4}, Search{"abc", "d", 0}, Search{"abc", "", 1},
          Search{"", "a", 0}, Search{"ÄÖÜ-x", "äöü", 1}, Search{"x\u00C4", "\u00E4", 2},
          Search{"-.\u212A-.k.", ".k.", 7}})
        EXPECT_EQ(InStr(text, part), place) << text;
    using Pair = std::tuple<const char*, const char*, bool>;
    for (const auto& [one, other, equal] :
         {Pair{"Straße", "STRAßE", true}, Pair{"Straße", "Strasse", false},
          Pair{"ПРИВЕТ", "привет", true}, Pair{"abc", "ab", false}, Pair{"I", "\u0131", false},
          Pair{"\xFF", "\xFE", false}, Pair{"\u13A0 \u03C3 \u01C5", "\uAB70 \u03C2 \u01C4", true},
          Pair{"a\xFF\xC3/b\x80", "A\xFF\xC3/B\x80", true}})
        EXPECT_EQ(EqualsIgnoringCase(one, other), equal) << one << ' ' << other;
}

TEST(Text, ReplacingGoesOnceFromTheLeft) {
    // Letters whose folded form has another length in bytes don't move what stands behind them, and
    // bytes that are no text survive.
    using Case = std::tuple<const char*, const char*, const char*, const char*>;
    for (const auto& [text, from, to, result] :
         {Case{"a///b", "//", "/", "a//b"}, Case{"aAaA", "aa", "a", "aa"}, Case{"x", "", "y", "x"},
          Case{"the theleft", "THELEFT", "5", "the 5"},
          Case{"\u0130.appBrackwater", ".APP", "", "\u0130Brackwater"},
          Case{"\u212A.app\u212A", "k", "-", "-.app-"},
          Case{"a\xFF\xC3/b\x80", "/", "//", "a\xFF\xC3//b\x80"}})
        EXPECT_EQ(ReplaceAll(text, from, to), result) << text;
}

TEST(Text, FieldsCountFromOneAndEndInEmptyOnes) {
    const char* fields[] = {"", "a\xFF\xC3", "B", "", "c", "", ""};
    for (int number = -1; number < 7; ++number)
        EXPECT_EQ(NthField("a\xFF\xC3:B::c", ":", number), fields[std::max(number, 0)]) << number;
    EXPECT_EQ(NthField("<KEY>x</key>y", "<key>", 2), "x</key>y");
    EXPECT_EQ(NthField("", ":", 1), "");
    EXPECT_EQ(CountFields("a:B::c", ":"), 4);
    EXPECT_EQ(CountFields("", ":"), 0);
    EXPECT_EQ(CountFields("abc", ""), 1);
}

TEST(Text, FormatRoundsTiesAwayFromZero) {
    using Case = std::pair<double, const char*>;
    for (const auto& [number, text] :
         {Case{0, "0.00"}, Case{0.004, "0.00"}, Case{0.006, "0.01"}, Case{0.125, "0.13"},
          Case{0.625, "0.63"}, Case{45.6, "45.60"}, Case{99.996, "100.00"}, Case{1234.5, "1234.50"},
          Case{-1, "-1.00"}, Case{-0.004, "0.00"}, Case{-0.005, "-0.01"}})
        EXPECT_EQ(Format(number, "##0.00"), text);
    for (const auto& [number, text] : {Case{0, ""}, Case{0.3, ""}, Case{0.5, "1"}, Case{2.5, "3"},
                                       Case{37.6, "38"}, Case{99.6, "100"}})
        EXPECT_EQ(Format(number, "#"), text);
    EXPECT_EQ(Format(1.5, "0.#") + Format(1.0, "0.#") + Format(7, "000"), "1.51007");
    EXPECT_EQ(Format(1e300, "##0.00").size(), 304U);
    for (const double odd : {std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_LT(Format(odd, "##0.00").size(), 8U);
}

} // namespace
} // namespace kqu

#include "framework/values/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace kqu {
namespace {

// What random texts, compared with a plain statement of the rules, hardly hit.

TEST(Text, NumbersFarOutOfRangeAreReadAsWhatTheyRoundTo) {
    const double infinity = std::numeric_limits<double>::infinity();
    const std::string ones(400, '1');
    const std::tuple<std::string, double> cases[] = {{"1e-400", 0},
                                                     {"1e-9223372036854775808", 0},
                                                     {"0e99999999999999999999", 0},
                                                     {"0.0001e400", infinity},
                                                     {"-1e99999999999999999999", -infinity},
                                                     {ones + "e-10", infinity},
                                                     {ones + "e-399", 1.1111111111111112},
                                                     {"0." + std::string(400, '0') + "1", 0},
                                                     {std::string(5000, '0') + "42", 42}};
    for (const auto& [text, value] : cases)
        EXPECT_EQ(Val(text), value) << text;
    for (const double odd : {infinity, -infinity, std::nan("")})
        EXPECT_LT(Format(odd, "##0.00").size(), 8U);
    EXPECT_EQ(Format(1e300, "##0.00").size(), 304U);
    EXPECT_EQ(Format(1.5, "0.#") + Format(1.0, "0.#") + Format(7, "000"), "1.51007");
}

TEST(Text, LettersThatFoldToAnotherLengthDoNotMoveWhatStandsBehindThem) {
    EXPECT_EQ(InStr("-.\u212A-.k.", ".k."), 7);
    EXPECT_EQ(ReplaceAll("\u0130.appBrackwater", ".APP", ""), "\u0130Brackwater");
    EXPECT_EQ(ReplaceAll("\u212A.app\u212A", "k", "-"), "-.app-");
    EXPECT_TRUE(EqualsIgnoringCase("\u13A0 \u03C3 \u01C5", "\uAB70 \u03C2 \u01C4"));
    EXPECT_FALSE(EqualsIgnoringCase("Straße", "Strasse"));
    EXPECT_FALSE(EqualsIgnoringCase("I", "\u0131"));
}

} // namespace
} // namespace kqu

#include "framework/values/Dictionary.h"
#include "framework/values/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace kqu {
namespace {

TEST(Dictionary, KeepsTheOrderOfInsertionAcrossRemovalsAndRaisesBeyondIt) {
    Dictionary table;
    for (int i = 0; i < 100; ++i)
        table.SetValue("key " + std::to_string(i), i);
    for (int i = 0; i < 100; i += 3)
        table.Remove("KEY " + std::to_string(i));
    table.SetValue("key 3", 1003);
    int previous = -1;
    for (int index = 0; index < table.Count(); ++index) {
        const std::int32_t value = table.Value(table.Key(index)).Int32Value();
        EXPECT_GT(value, previous);
        previous = value;
    }
    EXPECT_EQ(previous, 1003);
    table.SetValue("KEY 1", 1);
    EXPECT_EQ(table.Key(0), "key 1") << "under its first spelling";
    EXPECT_THROW(static_cast<void>(table.Value("key 0")), KeyNotFoundException);
    EXPECT_THROW(table.Remove("key 0"), KeyNotFoundException);
    for (const int beyond : {-1, 67})
        EXPECT_THROW(static_cast<void>(table.Key(beyond)), OutOfBoundsException);
    EXPECT_EQ(table.Count(), 67);
}

TEST(Text, IsFoundSplitAndReplacedWithoutRegardToCase) {
    struct Case {
        const char *text, *part;
        int place, fields;
        /// The second field, and the text with the parts as dashes.
        const char *second, *replaced;
    };
    for (const auto& [text, part, place, fields, second, replaced] :
         {Case{"a:b:c", ":", 2, 3, "b", "a-b-c"},
          {"", "x", 0, 0, "", ""},
          {"ab", "", 1, 1, "", "ab"},
          {"aXbxc", "x", 2, 3, "b", "a-b-c"},
          {"///", "//", 1, 2, "/", "-/"},
          {"\u00C4\u0394\u042F", "\u00E4\u03B4", 1, 2, "\u042F", "-\u042F"},
          {"\xFFz\xFE", "Z", 2, 2, "\xFE", "\xFF-\xFE"},
          {"\u00E9:\u00E8", ":", 3, 2, "\u00E8", "\u00E9-\u00E8"}}) {
        EXPECT_EQ(InStr(text, part), place) << text;
        EXPECT_EQ(CountFields(text, part), fields) << text;
        EXPECT_EQ(NthField(text, part, 2), second) << text;
        EXPECT_EQ(ReplaceAll(text, part, "-"), replaced) << text;
        EXPECT_EQ(NthField(text, part, fields + 1) + NthField(text, part, 0), "") << text;
    }
}

TEST(Text, NumbersAreReadFromTheStartAndWrittenByTheirMask) {
    for (const auto& [text, value] : {std::pair{"12abc", 12.0},
                                      {" \t-3.5e1x", -35.0},
                                      {"0x10", 0.0},
                                      {"nan", 0.0},
                                      {"", 0.0},
                                      {"4.5.6", 4.5},
                                      {"--1", 0.0},
                                      {"1e-2", 0.01}})
        EXPECT_EQ(Val(text), value) << text;
    struct Case {
        double number;
        const char *two, *none;
    };
    for (const auto& [number, two, none] : {Case{45.6, "45.60", "46"},
                                            {0.125, "0.13", ""},
                                            {1.005, "1.01", "1"},
                                            {0.5, "0.50", "1"},
                                            {0.0, "0.00", ""},
                                            {-0.004, "0.00", ""},
                                            {-2.5, "-2.50", "-3"},
                                            {99.996, "100.00", "100"}}) {
        EXPECT_EQ(Format(number, "##0.00"), two) << number;
        EXPECT_EQ(Format(number, "#"), none) << number;
    }
}

TEST(Text, LettersThatFoldToAnotherLengthDoNotMoveWhatStandsBehindThem) {
    EXPECT_EQ(InStr("-.\u212A-.k.", ".k."), 7);
    EXPECT_EQ(ReplaceAll("\u0130.appBrackwater", ".APP", ""), "\u0130Brackwater");
    EXPECT_EQ(ReplaceAll("\u212A.app\u212A", "k", "-"), "-.app-");
    EXPECT_TRUE(EqualsIgnoringCase("KQ\u00C4 \u03C3", "kq\u00E4 \u03C2"));
    EXPECT_FALSE(EqualsIgnoringCase("I", "\u0131"));
}

} // namespace
} // namespace kqu

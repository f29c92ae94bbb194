#include "framework/values/Dictionary.h"
#include "framework/values/Text.h"
#include "tests/support/MadeUpTree.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

// Numbers and letters are the same in every locale: in Turkish a comma stands in numbers, and the
// small "i" and the capital "I" are two letters.

namespace kqu {
namespace {

TEST(Locale, MakesNoDifferenceToNumbersAndLetters) {
    const simulation::MadeUpTree tree;
    const std::string make = "localedef --quiet --force -i tr_TR -f UTF-8 " +
                             (tree.Root() / "tr_TR.UTF-8").string() + " 2>/dev/null";
    static_cast<void>(std::system(make.c_str()));
    setenv("LOCPATH", tree.Root().c_str(), 1);
    ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr) << make;
    ASSERT_EQ(std::to_string(0.5), "0,500000");

    EXPECT_EQ(Val("37.6"), 37.6);
    EXPECT_EQ(Val("37,6"), 37.0);
    EXPECT_EQ(Format(1234.5, "##0.00"), "1234.50");
    EXPECT_EQ(Variant(0.25).StringValue(), "0.25");
    EXPECT_EQ(Variant("0.75").DoubleValue(), 0.75);
    EXPECT_EQ(Str(-1234567), "-1234567");

    Dictionary table;
    table.SetValue("PID", 1);
    table.SetValue("FileProgress \u00C4", 2);
    EXPECT_EQ(table.Value("pid").Int32Value(), 1);
    EXPECT_EQ(table.Value("FILEPROGRESS \u00E4").Int32Value(), 2);
    EXPECT_FALSE(table.HasKey("p\u0131d"));
    EXPECT_FALSE(table.HasKey("P\u0130D"));
    EXPECT_EQ(InStr("KQS_DISK", "kqs_disk"), 1);
    EXPECT_EQ(ReplaceAll("TITLE", "i", "-"), "T-TLE");
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
}

} // namespace
} // namespace kqu

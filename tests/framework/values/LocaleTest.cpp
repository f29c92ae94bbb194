#include "framework/values/Dictionary.h"
#include "framework/values/Text.h"
#include "tests/support/MadeUpTree.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

// Numbers and letters are the same in every locale: in German a comma stands in numbers, in Turkish
// also the small "i" and the capital "I" are two letters.

namespace kqu {
namespace {

/// Makes that locale in a folder of the test's own, and goes into it.
void Enter(const std::string& locale, const std::filesystem::path& folder) {
    const std::string name = locale + ".UTF-8";
    const std::string make = "localedef --quiet --force -i " + locale + " -f UTF-8 " +
                             (folder / name).string() + " 2>/dev/null";
    static_cast<void>(std::system(make.c_str()));
    setenv("LOCPATH", folder.c_str(), 1);
    ASSERT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr) << make;
    ASSERT_EQ(std::to_string(0.5), "0,500000");
}

void ExpectNumbersWithPointsAndOneAlphabet() {
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
}

TEST(Locale, MakesNoDifferenceToNumbersAndLetters) {
    const simulation::MadeUpTree tree;
    for (const char* locale : {"de_DE", "tr_TR"}) {
        SCOPED_TRACE(locale);
        Enter(locale, tree.Root());
        ExpectNumbersWithPointsAndOneAlphabet();
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }
}

} // namespace
} // namespace kqu

#include "framework/values/Dictionary.h"
#include "framework/values/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

// Numbers and letters are the same in every locale: in German a comma stands in numbers, in Turkish
// also the small "i" and the capital "I" are two letters.

namespace kqu {
namespace {

class InLocale : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kqu-locale-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        const std::string name = std::string(GetParam()) + ".UTF-8";
        const std::string make = "localedef --quiet --force -i " + std::string(GetParam()) +
                                 " -f UTF-8 " + (folder / name).string() + " 2>/dev/null";
        static_cast<void>(std::system(make.c_str()));
        setenv("LOCPATH", folder.c_str(), 1);
        ASSERT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr) << make;
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "%.1f", 0.5);
        ASSERT_STREQ(text.data(), "0,5");
    }
    void TearDown() override {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder);
    }
    std::filesystem::path folder;
};

TEST_P(InLocale, NumbersKeepTheirPointAndLettersTheirCase) {
    EXPECT_EQ(Val("37.6"), 37.6);
    EXPECT_EQ(Val("37,6"), 37.0);
    EXPECT_EQ(Val("1.5e2"), 150.0);
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

INSTANTIATE_TEST_SUITE_P(Locales, InLocale, testing::Values("de_DE", "tr_TR"),
                         [](const auto& locale) { return std::string(locale.param); });

} // namespace
} // namespace kqu

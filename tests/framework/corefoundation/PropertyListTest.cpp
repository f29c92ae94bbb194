#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFString.h"

#include <gtest/gtest.h>

#include <string>

namespace kqu {
namespace {

Ref<CFObject> Parse(const std::string& bytes) {
    return CFPropertyListParse(*CFData::Make(bytes));
}

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                         "<plist version=\"1.0\">";

TEST(PropertyList, GivesTheValuesOfAnXmlList) {
    const auto list = CFCast<CFDictionary>(Parse(
        head + "<!-- <key>off</key><true/> --><dict><key>On</key><true/><key>off</key><false/>"
               "<key>n</key><integer>5</integer><key>t</key><string>a&amp;b \xC3\xA4</string>"
               "<key>d</key><dict><key>On</key><false/></dict><key>l</key><array/></dict>"
               "</plist>\n"));
    EXPECT_EQ(list->Count(), 6);
    EXPECT_TRUE(CFCast<CFBoolean>(list->Value("On"))->Value());
    EXPECT_FALSE(CFCast<CFBoolean>(list->Value("off"))->Value());
    EXPECT_FALSE(list->ContainsKey("on"));
    EXPECT_EQ(CFCast<CFNumber>(list->Value("n"))->DoubleValue(), 5);
    EXPECT_EQ(CFCast<CFString>(list->Value("t"))->Text(), "a&b \xC3\xA4");
    EXPECT_EQ(list->Value("l")->TypeID(), CFTypeID::Other);
    EXPECT_EQ(list->Value("absent"), nullptr);
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("n"))), IllegalCastException);
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("absent"))), NilObjectException);
}

TEST(PropertyList, GivesTheValuesOfABinaryList) {
    const std::string binary(
        "bplist00\xD1\x01\x02"
        "\x59SleepOnAC\x09\x08\x0B\x15"
        "\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x16",
        8 + 3 + 10 + 1 + 3 + 32);
    const auto list = CFCast<CFDictionary>(Parse(binary));
    EXPECT_TRUE(CFCast<CFBoolean>(list->Value("SleepOnAC"))->Value());
    for (std::size_t length = 6; length < binary.size(); ++length)
        EXPECT_EQ(Parse(binary.substr(0, length)), nullptr) << length;
}

TEST(PropertyList, ABrokenOneIsNilAsAWhole) {
    const std::string good = head + "<dict><key>SleepOnAC</key><true/></dict></plist>";
    ASSERT_NE(Parse(good), nullptr);
    for (std::size_t length = 0; length + 1 < good.size(); ++length)
        EXPECT_EQ(Parse(good.substr(0, length)), nullptr) << good.substr(0, length);
    for (const std::string& broken :
         {std::string("not a list"), head + "<dict><key>a</key></plist></dict>",
          head + "<dict><key>a</dict></key></plist>", good + good, good + "text",
          head + "<dict><key>a</key>" + std::string(5, '\0') + "</dict>", std::string("<plist>"),
          head + "</plist>"})
        EXPECT_EQ(Parse(broken), nullptr) << broken;
}

TEST(PropertyList, NeitherDepthNorEntitiesExplode) {
    std::string deep = head;
    for (int i = 0; i < 100000; ++i)
        deep += "<array>";
    for (int i = 0; i < 100000; ++i)
        deep += "</array>";
    EXPECT_EQ(Parse(deep + "</plist>"), nullptr);
    EXPECT_EQ(Parse("<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">"
                    "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]><plist version=\"1.0\">"
                    "<dict><key>k</key><string>&b;&b;&b;</string></dict></plist>"),
              nullptr);
}

TEST(CFDictionary, KeysAreExactAndTheLastOfEqualOnesCounts) {
    const auto dictionary = CFDictionary::Make({{"b", CFNumber::Make(1)},
                                                {"a", CFNumber::Make(2)},
                                                {"b", CFNumber::Make(3)},
                                                {"B", CFNumber::Make(4)},
                                                {"", CFNumber::Make(5)},
                                                {"b", CFNumber::Make(6)}});
    EXPECT_EQ(dictionary->Count(), 4);
    EXPECT_EQ(CFCast<CFNumber>(dictionary->Value("b"))->DoubleValue(), 6);
    EXPECT_EQ(CFCast<CFNumber>(dictionary->Value("B"))->DoubleValue(), 4);
    EXPECT_TRUE(dictionary->ContainsKey(""));
}

} // namespace
} // namespace kqu

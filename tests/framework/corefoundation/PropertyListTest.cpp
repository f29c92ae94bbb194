#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFString.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

Ref<CFObject> ParseList(const std::string& bytes) {
    return CFPropertyListParse(*CFData::Make(bytes));
}

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                         "<plist version=\"1.0\">";

TEST(PropertyList, GivesItsValues) {
    const auto list = CFCast<CFDictionary>(ParseList(
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
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("n"))), IllegalCastException);
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("absent"))), NilObjectException);
}

TEST(PropertyList, ABrokenOneIsNilAsAWhole) {
    const std::string good = head + "<dict><key>SleepOnAC</key><true/></dict></plist>";
    ASSERT_NE(ParseList(good), nullptr);
    for (std::size_t length = 0; length + 1 < good.size(); ++length)
        EXPECT_EQ(ParseList(good.substr(0, length)), nullptr) << good.substr(0, length);
    for (const std::string& broken :
         {std::string("not a list"), head + "<dict><key>a</key></plist></dict>",
          head + "<dict><key>a</dict></key></plist>", good + good, good + "text",
          head + "<dict><key>a</key>" + std::string(5, '\0') + "</dict>", std::string("<plist>"),
          head + "</plist>", std::string("<plist/>")})
        EXPECT_EQ(ParseList(broken), nullptr) << broken;
    for (const std::string content :
         {"<dict><key>a</key></dict>", "<dict><true/></dict>",
          "<dict><key>a</key><key>b</key></dict>", "<dict><key>a</key><true/><false/></dict>",
          "<dict>a<key>a</key><true/></dict>", "<dict><key>a</key><true>b</true></dict>",
          "<dict><key>a</key><yes/></dict>", "<dict><key>a</key><integer>one</integer></dict>",
          "<real>1.5.2</real>", "<integer/>", "<real> </real>", "<array><key>a</key></array>",
          "<dict/><dict/>", "<plist><dict/></plist>", "<string>&unknown;</string>",
          "<string>a & b</string>", "<string>a<true/></string>"})
        EXPECT_EQ(ParseList(head + content + "</plist>"), nullptr) << content;
}

TEST(PropertyList, WhatIsOddButSoundIsTaken) {
    for (const std::string& list : {"\xEF\xBB\xBF" + head + "<true/></plist>",
                                    std::string("<!-- a --> <true></true>\r<!-- <b> -->"),
                                    head + "<?odd?><true /></plist >\n"})
        EXPECT_TRUE(CFCast<CFBoolean>(ParseList(list))->Value()) << list;
    EXPECT_EQ(
        CFCast<CFString>(ParseList("<string>a<![CDATA[<&]]>&#228;<!-- b --></string>"))->Text(),
        "a<&\u00E4");
    for (const std::string& list :
         {std::string("<integer> -5 </integer>"), std::string("<real>-5.0e0</real>"),
          std::string("<integer>-0x5</integer>")})
        EXPECT_EQ(CFCast<CFNumber>(ParseList(list))->DoubleValue(), -5) << list;
}

TEST(PropertyList, NoListIsTooMuchForIt) {
    const auto many = [](int count, const std::string& text) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    for (const std::string& list :
         {many(100000, "<array>") + many(100000, "</array>"),
          "<string>" + std::string(1 << 20, 'x') + "</string>", std::string("bplist00"),
          std::string("<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
                      "<plist><string>&b;&b;&b;</string></plist>")})
        EXPECT_EQ(ParseList(list), nullptr) << list.substr(0, 20);
    EXPECT_NE(ParseList("<array>" + many(10000, "<string>a&amp;b</string>") + "</array>"), nullptr);
}

TEST(CFDictionary, KeysAreExactAndTheLastOfEqualOnesCounts) {
    const auto n = [](int number) { return CFNumber::Make(number); };
    const auto dictionary =
        CFDictionary::Make({{"b", n(1)}, {"B", n(4)}, {"", n(5)}, {"a", n(2)}, {"b", n(6)}});
    EXPECT_EQ(dictionary->Count(), 4);
    EXPECT_EQ(CFCast<CFNumber>(dictionary->Value("b"))->DoubleValue(), 6);
    EXPECT_EQ(CFCast<CFNumber>(dictionary->Value("B"))->DoubleValue(), 4);
    EXPECT_TRUE(dictionary->ContainsKey(""));
}

} // namespace
} // namespace kqu

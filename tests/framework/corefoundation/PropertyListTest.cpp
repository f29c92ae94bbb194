#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFValues.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

Ref<CFObject> ParseList(const std::string& bytes) {
    return CFPropertyListParse(bytes);
}

/// A whole number, the high byte first.
std::string Bytes(std::size_t number, int size) {
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
    return bytes;
}

/// A binary list of these objects, the first one on top; references in them take two bytes.
std::string BinaryList(const std::vector<std::string>& objects) {
    std::string list = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += Bytes(list.size(), 4);
        list += object;
    }
    const std::size_t table = list.size();
    return list + offsets + std::string(6, '\0') + '\4' + '\2' + Bytes(objects.size(), 8) +
           Bytes(0, 8) + Bytes(table, 8);
}

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                         "<plist version=\"1.0\">";

TEST(PropertyList, GivesTheValuesOfBothForms) {
    const auto list = CFCast<CFDictionary>(ParseList(
        head + "<!-- <key>off</key><true/> --><dict><key>On</key><true/><key>off</key><false/>"
               "<key>n</key><integer>5</integer><key>t</key><string>a&amp;b \xC3\xA4</string>"
               "<key>d</key><dict><key>On</key><false/></dict><key>l</key><array/></dict>"
               "</plist>\n"));
    EXPECT_TRUE(CFCast<CFBoolean>(list->Value("On"))->Value());
    EXPECT_FALSE(CFCast<CFBoolean>(list->Value("off"))->Value());
    EXPECT_FALSE(list->ContainsKey("on"));
    EXPECT_EQ(CFCast<CFNumber>(list->Value("n"))->DoubleValue(), 5);
    EXPECT_EQ(CFCast<CFString>(list->Value("t"))->Text(), "a&b \xC3\xA4");
    EXPECT_EQ(list->Value("l")->TypeID(), CFTypeID::Other);
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("n"))), IllegalCastException);
    EXPECT_THROW(static_cast<void>(CFCast<CFBoolean>(list->Value("absent"))), NilObjectException);

    const std::string binary =
        BinaryList({std::string("\xD1\0\1\0\2", 5), "\x59SleepOnAC", "\x09"});
    const auto other = CFCast<CFDictionary>(ParseList(binary));
    EXPECT_TRUE(CFCast<CFBoolean>(other->Value("SleepOnAC"))->Value());
    for (std::size_t length = 6; length < binary.size(); ++length)
        EXPECT_EQ(ParseList(binary.substr(0, length)), nullptr) << length;
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
          "<real>1.5.2</real>", "<real> </real>", "<array><key>a</key></array>", "<dict/><dict/>",
          "<plist><dict/></plist>", "<string>&unknown;</string>", "<string>a & b</string>",
          "<string>a<true/></string>", "<array><plist><true/></plist></array>"})
        EXPECT_EQ(ParseList(head + content + "</plist>"), nullptr) << content;
}

TEST(PropertyList, WhatIsOddButSoundIsTaken) {
    for (const std::string& list : {"\xEF\xBB\xBF" + head + "<true/></plist>",
                                    std::string("<!-- a --> <true></true>\r<!-- <b> -->"),
                                    head + "<?odd?><true /></plist >\n", BinaryList({"\x09"})})
        EXPECT_TRUE(CFCast<CFBoolean>(ParseList(list))->Value()) << list;
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
          "<array>" + many(200000, "<true/>") + "</array>",
          std::string("<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
                      "<plist><string>&b;&b;&b;</string></plist>")})
        EXPECT_EQ(ParseList(list), nullptr) << list.substr(0, 20);
    EXPECT_NE(ParseList("<string>" + many(200000, "&amp;") + "</string>"), nullptr);

    // Each array mentions the next one, once and twice.
    const auto nested = [](std::size_t depth, bool twice) {
        std::vector<std::string> arrays;
        for (std::size_t next = 1; next <= depth; ++next)
            arrays.push_back((twice ? "\xA2" + Bytes(next, 2) : "\xA1") + Bytes(next, 2));
        arrays.emplace_back("\x09");
        return BinaryList(arrays);
    };
    EXPECT_NE(ParseList(nested(100, false)), nullptr);
    EXPECT_EQ(ParseList(nested(60000, false)), nullptr);
    EXPECT_NE(ParseList(nested(8, true)), nullptr);
    EXPECT_EQ(ParseList(nested(60, true)), nullptr);
    EXPECT_EQ(ParseList(BinaryList({std::string("\xA1\0\0", 3)})), nullptr);
    // A text with a NUL in it.
    for (const std::string& text : {std::string("\x53\x61\0b", 4), std::string("\x62\0a\0\0", 5)})
        EXPECT_EQ(ParseList(BinaryList({text})), nullptr);
}

} // namespace
} // namespace kqu

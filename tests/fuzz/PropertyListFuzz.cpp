#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFString.h"
#include "tests/fuzz/Expect.h"

#include <cstdint>
#include <sstream>

// Any bytes.

using namespace kqu;
using fuzz::Expect;

namespace {

const std::string keys = "abcdefgh";

Ref<CFObject> ParseList(const std::string& bytes) {
    return CFPropertyListParse(*CFData::Make(bytes));
}

/// Checks what was read, counts its values and tells them.
std::string Told(const Ref<CFObject>& object, int& values, int depth = 0) {
    Expect(object != nullptr && depth <= deepestList + 1);
    ++values;
    std::ostringstream told;
    if (object->TypeID() == CFTypeID::String) {
        const std::string text = CFCast<CFString>(object)->Text();
        Expect(text.find('\0') == std::string::npos);
        told << '"' << text << '"';
    } else if (object->TypeID() == CFTypeID::Boolean) {
        told << std::boolalpha << CFCast<CFBoolean>(object)->Value();
    } else if (object->TypeID() == CFTypeID::Number) {
        told << std::hexfloat << CFCast<CFNumber>(object)->DoubleValue();
    } else if (object->TypeID() == CFTypeID::Dictionary) {
        const auto dictionary = CFCast<CFDictionary>(object);
        told << dictionary->Count() << " values";
        for (const char key : keys) {
            const std::string name(1, key);
            const bool isThere = dictionary->ContainsKey(name);
            Expect(isThere == (dictionary->Value(name) != nullptr));
            told << (isThere ? name + Told(dictionary->Value(name), values, depth + 1) : "");
        }
    }
    return told.str();
}

void CheckXml(const std::string& list, const std::string& told) {
    int values = 0;
    // What surrounds a list changes nothing, and what is cut off or doubled is none.
    Expect(Told(ParseList("\xEF\xBB\xBF<!-- <a> --> " + list + "\r\n"), values) == told);
    Expect(ParseList(list + list) == nullptr && ParseList(list + "<true/>") == nullptr);
    Expect(ParseList(list.substr(0, list.rfind('>'))) == nullptr);
    const auto inside = list.find("<plist") == std::string::npos ? list : std::string("<true/>");
    const auto wrapped = ParseList("<plist><dict><key>a</key>" + inside + "</dict></plist>");
    if (wrapped && inside == list && list.find("<!DOCTYPE") == std::string::npos)
        Expect(Told(CFCast<CFDictionary>(wrapped)->Value("a"), values) == told);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const Ref<CFObject> object = ParseList(bytes);
    if (!object)
        return 0;
    int values = 0;
    const std::string told = Told(object, values);
    Expect(told == Told(ParseList(bytes), values));
    // Other encodings have ends of their own, and a declaration stands first or nowhere.
    if (bytes.find('\0') == std::string::npos && bytes.find("<?xml") == std::string::npos &&
        !bytes.starts_with("\xEF\xBB\xBF"))
        CheckXml(bytes, told);
    return 0;
}

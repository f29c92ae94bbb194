#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFString.h"
#include "framework/corefoundation/PropertyListBounds.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/PropertyLists.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <sstream>

// Any bytes; those that begin with an "o" are taken as the objects of a binary list, which is put
// together around them, because its tables would hardly ever be hit by chance.

using namespace kqu;
using namespace testing_support;
using fuzz::Expect;

namespace {

const std::string keys = "abcdefgh";

std::string AnyBinaryList(FuzzedDataProvider& input) {
    std::vector<std::string> objects;
    while (input.remaining_bytes() > 0 && objects.size() < 100)
        objects.push_back(
            input.ConsumeBytesAsString(input.ConsumeIntegralInRange<std::size_t>(1, 20)));
    return BinaryList(objects);
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
    FuzzedDataProvider input(data, size);
    const bool isBinary = size > 0 && data[0] == 'o';
    if (isBinary)
        static_cast<void>(input.ConsumeBytesAsString(1));
    const std::string bytes =
        isBinary ? AnyBinaryList(input) : input.ConsumeRemainingBytesAsString();
    const Ref<CFObject> object = ParseList(bytes);
    if (!object)
        return 0;
    int values = 0;
    const std::string told = Told(object, values);
    Expect(values <= mostListValues && told == Told(ParseList(bytes), values));
    if (!bytes.starts_with("bplist") && !bytes.starts_with("\xEF\xBB\xBF"))
        CheckXml(bytes, told);
    return 0;
}

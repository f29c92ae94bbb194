#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFString.h"
#include "framework/corefoundation/PropertyListBounds.h"
#include "tests/fuzz/Expect.h"

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>
#include <vector>

// Any bytes; those that begin with an "o" are taken as the objects of a binary list, which is put
// together around them, because its tables would hardly ever be hit by chance.

using namespace kqu;
using fuzz::Expect;

namespace {

const std::string keys = "abcdefgh";

std::string BigEndian(std::size_t number, unsigned size) {
    std::string bytes;
    for (unsigned place = size; place > 0; --place)
        bytes += static_cast<char>(number >> 8U * (place - 1) & 0xFFU);
    return bytes;
}

std::string BinaryList(FuzzedDataProvider& input) {
    std::string list = "bplist00";
    std::string offsets;
    std::size_t count = 0;
    for (; input.remaining_bytes() > 0 && count < 100; ++count) {
        offsets += BigEndian(list.size(), 2);
        const std::size_t size = input.ConsumeIntegralInRange<std::size_t>(1, 20);
        list += input.ConsumeBytesAsString(size);
    }
    const std::size_t table = list.size();
    return list + offsets + std::string(6, '\0') + "\2\1" + BigEndian(count, 8) + BigEndian(0, 8) +
           BigEndian(table, 8);
}

/// Checks what was read, and counts its values.
int Walk(const Ref<CFObject>& object, int depth) {
    Expect(object != nullptr && depth <= deepestList + 1);
    if (object->TypeID() == CFTypeID::String)
        Expect(CFCast<CFString>(object)->Text().find('\0') == std::string::npos);
    if (object->TypeID() != CFTypeID::Dictionary)
        return 1;
    const auto dictionary = CFCast<CFDictionary>(object);
    int values = 1;
    for (const char key : keys) {
        const std::string name(1, key);
        Expect(dictionary->ContainsKey(name) == (dictionary->Value(name) != nullptr));
        if (dictionary->ContainsKey(name))
            values += Walk(dictionary->Value(name), depth + 1);
    }
    return values;
}

bool Same(const Ref<CFObject>& a, const Ref<CFObject>& b) {
    if (!a || !b || a->TypeID() != b->TypeID())
        return !a && !b;
    switch (a->TypeID()) {
    case CFTypeID::String:
        return CFCast<CFString>(a)->Text() == CFCast<CFString>(b)->Text();
    case CFTypeID::Boolean:
        return CFCast<CFBoolean>(a)->Value() == CFCast<CFBoolean>(b)->Value();
    case CFTypeID::Number: {
        const double x = CFCast<CFNumber>(a)->DoubleValue();
        const double y = CFCast<CFNumber>(b)->DoubleValue();
        return x == y || (std::isnan(x) && std::isnan(y));
    }
    case CFTypeID::Dictionary:
        return CFCast<CFDictionary>(a)->Count() == CFCast<CFDictionary>(b)->Count();
    default:
        return true;
    }
}

Ref<CFObject> Parse(const std::string& bytes) {
    return CFPropertyListParse(*CFData::Make(bytes));
}

void CheckXml(const std::string& list, const Ref<CFObject>& object) {
    // What surrounds a list changes nothing, and what is cut off or doubled is none.
    Expect(Same(object, Parse("\xEF\xBB\xBF<!-- <a> --> " + list + "\r\n")));
    Expect(Parse(list + list) == nullptr && Parse(list + "<true/>") == nullptr);
    Expect(Parse(list.substr(0, list.rfind('>'))) == nullptr);
    const auto inside = list.find("<plist") == std::string::npos ? list : std::string("<true/>");
    const auto wrapped = Parse("<plist><dict><key>a</key>" + inside + "</dict></plist>");
    if (wrapped && inside == list && list.find("<!DOCTYPE") == std::string::npos)
        Expect(Same(CFCast<CFDictionary>(wrapped)->Value("a"), object));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool isBinary = size > 0 && data[0] == 'o';
    if (isBinary)
        static_cast<void>(input.ConsumeBytesAsString(1));
    const std::string bytes = isBinary ? BinaryList(input) : input.ConsumeRemainingBytesAsString();
    const Ref<CFObject> object = Parse(bytes);
    if (!object)
        return 0;
    Expect(Walk(object, 0) <= mostListValues);
    Expect(Same(object, Parse(bytes)));
    if (!bytes.starts_with("bplist") && !bytes.starts_with("\xEF\xBB\xBF"))
        CheckXml(bytes, object);
    return 0;
}

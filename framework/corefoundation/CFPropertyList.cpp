#include "framework/corefoundation/CFPropertyList.h"

#include "framework/corefoundation/BinaryListForm.h"
#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFOther.h"
#include "framework/corefoundation/CFString.h"
#include "framework/corefoundation/XmlListForm.h"
#include "platform/CDeleter.h"

#include <plist/plist.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace kqu {

namespace {
/// The library does not expect one.
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
/// In bytes. Padding costs no more than its reading, but the library counts in 32 bits.
constexpr std::size_t largestList = std::size_t{256} << 20U;

using Node = std::unique_ptr<void, platform::CDeleter<plist_free>>;
using CText = std::unique_ptr<char, platform::CDeleter<std::free>>;

Ref<CFObject> ToObject(plist_t node);

std::string TextOf(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const CText owned(text);
    return owned ? std::string(owned.get()) : std::string();
}

Ref<CFObject> ToDictionary(plist_t node) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const std::unique_ptr<void, platform::CDeleter<std::free>> ownedIterator(iterator);
    CFDictionary::Entries entries;
    while (true) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        const CText ownedKey(key);
        if (value == nullptr || key == nullptr)
            return CFDictionary::Make(std::move(entries));
        entries.emplace_back(key, ToObject(value));
    }
}

double NumberOf(plist_t node) {
    double number = 0.0;
    if (plist_get_node_type(node) == PLIST_REAL) {
        plist_get_real_val(node, &number);
    } else {
        std::uint64_t whole = 0;
        plist_get_uint_val(node, &whole);
        // The library knows no sign, but keeps a negative number's bits.
        number = static_cast<double>(static_cast<std::int64_t>(whole));
    }
    return number;
}

Ref<CFObject> ToObject(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t truth = 0;
        plist_get_bool_val(node, &truth);
        return CFBoolean::Make(truth != 0);
    }
    case PLIST_UINT:
    case PLIST_REAL:
        return CFNumber::Make(NumberOf(node));
    case PLIST_STRING:
        return CFString::Make(TextOf(node));
    case PLIST_DICT:
        return ToDictionary(node);
    default:
        return CFOther::Make();
    }
}
} // namespace

Ref<CFObject> CFPropertyListParse(const CFData& data) {
    std::string_view bytes = data.Bytes();
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    if (bytes.size() > largestList)
        return nullptr;
    plist_t parsed = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (IsBinaryPropertyList(bytes)) {
        if (IsBoundedBinaryList(bytes))
            plist_from_bin(bytes.data(), length, &parsed);
    } else if (IsWholeXmlList(bytes)) {
        plist_from_xml(bytes.data(), length, &parsed);
    }
    const Node owned(parsed);
    return parsed != nullptr ? ToObject(parsed) : nullptr;
}

} // namespace kqu

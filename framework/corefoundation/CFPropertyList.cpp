#include "framework/corefoundation/CFPropertyList.h"

#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFOther.h"
#include "framework/corefoundation/CFString.h"
#include "framework/corefoundation/PropertyListForm.h"
#include "platform/CDeleter.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace kqu {

namespace {
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
        number = static_cast<double>(whole);
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
        // Nested dictionaries are looked at by nobody; a list of them is only as deep as needed.
        return ToDictionary(node);
    default:
        return CFOther::Make();
    }
}
} // namespace

Ref<CFObject> CFPropertyListParse(const CFData& data) {
    const std::string& bytes = data.Bytes();
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max() || !HasPropertyListForm(bytes))
        return nullptr;
    plist_t parsed = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (IsBinaryPropertyList(bytes))
        plist_from_bin(bytes.data(), length, &parsed);
    else
        plist_from_xml(bytes.data(), length, &parsed);
    const Node owned(parsed);
    return parsed != nullptr ? ToObject(parsed) : nullptr;
}

} // namespace kqu

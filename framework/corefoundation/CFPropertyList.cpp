#include "framework/corefoundation/CFPropertyList.h"

#include "framework/corefoundation/ListForms.h"
#include "framework/files/FolderItem.h"
#include "framework/files/Streams.h"
#include "platform/CDeleter.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

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

Ref<CFObject> CFPropertyListParse(std::string_view bytes) {
    // The XML parser does not expect a byte order mark.
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    if (bytes.size() > longestFile)
        return nullptr;
    if (!bytes.starts_with("bplist"))
        return ReadXmlPropertyList(bytes);
    plist_t parsed = nullptr;
    if (IsBoundedBinaryList(bytes))
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &parsed);
    const Node owned(parsed);
    return parsed != nullptr ? ToObject(parsed) : nullptr;
}

Ref<CFObject> CFPropertyListOf(const FolderItem& file) {
    const Ref<FileStream> stream = file.OpenAsTextFile();
    return stream ? CFPropertyListParse(stream->ReadAll()) : nullptr;
}

} // namespace kqu

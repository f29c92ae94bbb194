#include "framework/corefoundation/CFDictionary.h"

#include <algorithm>
#include <memory>

namespace kqu {

namespace {
using Entry = CFDictionary::Entries::value_type;

bool KeyIsLess(const Entry& a, const Entry& b) {
    return a.first < b.first;
}
} // namespace

Ref<CFDictionary> CFDictionary::Make(Entries entries) {
    return std::make_shared<CFDictionary>(std::move(entries));
}

CFDictionary::CFDictionary(Entries entries) : entries_(std::move(entries)) {
    std::stable_sort(entries_.begin(), entries_.end(), KeyIsLess);
    // From behind, so that of equal keys the last one stays.
    const auto firstKept =
        std::unique(entries_.rbegin(), entries_.rend(),
                    [](const Entry& a, const Entry& b) { return a.first == b.first; });
    entries_.erase(entries_.begin(), firstKept.base());
}

const Ref<CFObject>* CFDictionary::Find(std::string_view key) const {
    const auto found = std::lower_bound(
        entries_.begin(), entries_.end(), key,
        [](const Entry& entry, std::string_view wanted) { return entry.first < wanted; });
    return found != entries_.end() && found->first == key ? &found->second : nullptr;
}

Ref<CFObject> CFDictionary::Value(std::string_view key) const {
    const auto* value = Find(key);
    return value != nullptr ? *value : nullptr;
}

} // namespace kqu

#include "framework/values/Dictionary.h"

#include "framework/values/CaseFolding.h"
#include "framework/values/Text.h"

#include <cstdint>
#include <utility>

namespace kqu {

std::size_t Dictionary::KeyHash::operator()(std::string_view key) const {
    // FNV-1a over the folded characters, so that a look-up makes no folded copy.
    constexpr std::uint64_t basis = 14695981039346656037ULL;
    constexpr std::uint64_t prime = 1099511628211ULL;
    // Of a longer key only the start counts.
    constexpr int mostCharacters = 256;
    std::uint64_t hash = basis;
    for (int count = 0; count < mostCharacters && !key.empty(); ++count) {
        std::size_t length = 0;
        hash = (hash ^ FoldedCharacter(key, length)) * prime;
        key.remove_prefix(length);
    }
    return static_cast<std::size_t>(hash);
}

bool Dictionary::KeyEqual::operator()(std::string_view a, std::string_view b) const {
    return EqualsIgnoringCase(a, b);
}

std::size_t Dictionary::IndexOf(std::string_view key) const {
    const auto found = indices_.find(key);
    if (found == indices_.end())
        throw KeyNotFoundException("there is no key " + std::string(key));
    return found->second;
}

Variant Dictionary::Value(std::string_view key) const {
    return entries_[IndexOf(key)].value;
}

void Dictionary::SetValue(std::string_view key, Variant value) {
    if (const auto found = indices_.find(key); found != indices_.end()) {
        entries_[found->second].value = std::move(value);
        return;
    }
    entries_.push_back({std::string(key), std::move(value)});
    indices_.emplace(std::string(key), entries_.size() - 1);
}

std::string Dictionary::Key(int index) const {
    if (index < 0 || index >= Count())
        throw OutOfBoundsException("there is no key of index " + Str(index));
    return entries_[static_cast<std::size_t>(index)].key;
}

void Dictionary::Remove(std::string_view key) {
    const std::size_t index = IndexOf(key);
    indices_.erase(indices_.find(key));
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    for (auto& [other, place] : indices_)
        if (place > index)
            --place;
}

} // namespace kqu

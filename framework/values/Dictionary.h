#pragma once

#include "framework/values/CaseFolding.h"
#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "framework/values/Variant.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kqu {

/// Values under keys of text that compare without regard to letter case, by simple Unicode case
/// folding and in every locale alike. A key keeps the spelling of its first insertion.
///
/// The entries stand in the order of their insertion and can be reached by index in constant time;
/// indices hold until the next addition or removal. A removal costs the entries behind it.
class Dictionary : public Object {
  public:
    [[nodiscard]] int Count() const { return static_cast<int>(entries_.size()); }
    [[nodiscard]] bool HasKey(std::string_view key) const;

    /// Raises KeyNotFoundException.
    [[nodiscard]] Variant Value(std::string_view key) const;
    /// Adds an entry at the end, or gives the key's entry another value.
    void SetValue(std::string_view key, Variant value);

    /// The key at an index from 0 to `Count` - 1. Raises OutOfBoundsException.
    [[nodiscard]] std::string Key(int index) const;
    /// Raises KeyNotFoundException.
    void Remove(std::string_view key);

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return FoldedHash(key); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const {
            return EqualsIgnoringCase(a, b);
        }
    };
    using Index = std::unordered_map<std::string, std::size_t, Hash, Equal>;
    struct Entry {
        /// The key's node in the index, which stays where it is while the index grows.
        Index::value_type* place;
        Variant value;
    };

    Index index_;
    std::vector<Entry> entries_;
};

} // namespace kqu

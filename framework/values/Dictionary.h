#pragma once

#include "framework/values/Object.h"
#include "framework/values/Variant.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kqu {

/// A table of variants under text keys, which compare without regard to letter case, in any script
/// and any locale. Keeps its entries in the order of their insertion and each key as it was first
/// written; indices hold until the next addition or removal.
class Dictionary : public Object {
  public:
    [[nodiscard]] int Count() const { return static_cast<int>(entries_.size()); }
    [[nodiscard]] bool HasKey(std::string_view key) const { return indices_.contains(key); }
    /// Raises KeyNotFoundException.
    [[nodiscard]] Variant Value(std::string_view key) const;
    void SetValue(std::string_view key, Variant value);
    /// The key at an index from 0 to Count - 1. Raises OutOfBoundsException.
    [[nodiscard]] std::string Key(int index) const;
    /// Raises KeyNotFoundException.
    void Remove(std::string_view key);

  private:
    struct Entry {
        std::string key;
        Variant value;
    };
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const;
    };
    struct KeyEqual {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const;
    };
    [[nodiscard]] std::size_t IndexOf(std::string_view key) const;

    std::vector<Entry> entries_;
    std::unordered_map<std::string, std::size_t, KeyHash, KeyEqual> indices_;
};

} // namespace kqu

#pragma once

#include "framework/corefoundation/CFObject.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kqu {

/// Values under text keys, which compare exactly, unlike those of the framework's Dictionary.
class CFDictionary : public CFObject {
  public:
    using Entries = std::vector<std::pair<std::string, Ref<CFObject>>>;
    static constexpr CFTypeID typeID = CFTypeID::Dictionary;

    /// Of several entries with one key the last counts.
    [[nodiscard]] static Ref<CFDictionary> Make(Entries entries);
    explicit CFDictionary(Entries entries);

    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }
    [[nodiscard]] int Count() const { return static_cast<int>(entries_.size()); }
    [[nodiscard]] bool ContainsKey(std::string_view key) const { return Find(key) != nullptr; }
    /// The value under a key, nil if there is none.
    [[nodiscard]] Ref<CFObject> Value(std::string_view key) const;

  private:
    [[nodiscard]] const Ref<CFObject>* Find(std::string_view key) const;

    /// Sorted by key, each key once.
    Entries entries_;
};

} // namespace kqu

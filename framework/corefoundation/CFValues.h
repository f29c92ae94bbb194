#pragma once

#include "framework/values/Object.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kqu {

/// Which kind of value an object of the notifications and property lists is.
enum class CFTypeID { String, Boolean, Number, Dictionary, Other };

/// A value of a notification or a property list. Immutable once it is made.
class CFObject : public Object {
  public:
    [[nodiscard]] virtual CFTypeID TypeID() const = 0;
};

/// The object as one of type T. Raises IllegalCastException for another type, NilObjectException
/// for nil.
template <class T>
[[nodiscard]] Ref<T> CFCast(const Ref<CFObject>& object) {
    if (Required(object)->TypeID() != T::typeID)
        throw IllegalCastException("a value is of another type than the one wanted");
    return std::static_pointer_cast<T>(object);
}

/// A copy that shares nothing that could change. Values never change, so it is the value itself.
[[nodiscard]] inline Ref<CFObject> CFDeepCopy(const Ref<CFObject>& object) {
    return object;
}

/// What the objects around a single C++ value have in common.
template <class Self, CFTypeID id, class T>
class CFValue : public CFObject {
  public:
    static constexpr CFTypeID typeID = id;
    [[nodiscard]] static Ref<Self> Make(T value) {
        return std::make_shared<Self>(std::move(value));
    }
    explicit CFValue(T value) : value_(std::move(value)) {}
    [[nodiscard]] CFTypeID TypeID() const override { return typeID; }

  protected:
    T value_;
};

/// A text, by intention UTF-8.
class CFString : public CFValue<CFString, CFTypeID::String, std::string> {
  public:
    using CFValue::CFValue;
    [[nodiscard]] const std::string& Text() const { return value_; }
};

/// True or false.
class CFBoolean : public CFValue<CFBoolean, CFTypeID::Boolean, bool> {
  public:
    using CFValue::CFValue;
    [[nodiscard]] bool Value() const { return value_; }
};

/// A number of any kind.
class CFNumber : public CFValue<CFNumber, CFTypeID::Number, double> {
  public:
    using CFValue::CFValue;
    [[nodiscard]] double DoubleValue() const { return value_; }
};

/// Values under text keys, which compare exactly, unlike those of the framework's Dictionary. Of
/// several entries with one key the last counts. There are a few entries only: they are searched
/// one after the other, from behind.
class CFDictionary : public CFValue<CFDictionary, CFTypeID::Dictionary,
                                    std::vector<std::pair<std::string, Ref<CFObject>>>> {
  public:
    using Entries = std::vector<std::pair<std::string, Ref<CFObject>>>;
    using CFValue::CFValue;

    /// The number of entries, those of one key included.
    [[nodiscard]] int Count() const { return static_cast<int>(value_.size()); }
    [[nodiscard]] bool ContainsKey(std::string_view key) const { return Find(key) != nullptr; }
    /// The value under a key, nil if there is none.
    [[nodiscard]] Ref<CFObject> Value(std::string_view key) const {
        const auto* value = Find(key);
        return value != nullptr ? *value : nullptr;
    }

  private:
    [[nodiscard]] const Ref<CFObject>* Find(std::string_view key) const {
        const auto found = std::find_if(value_.rbegin(), value_.rend(),
                                        [key](const auto& entry) { return entry.first == key; });
        return found != value_.rend() ? &found->second : nullptr;
    }
};

/// A value of a kind that nothing here asks for: an array, a date, a descriptor.
class CFOther : public CFObject {
  public:
    [[nodiscard]] static Ref<CFOther> Make() { return std::make_shared<CFOther>(); }
    [[nodiscard]] CFTypeID TypeID() const override { return CFTypeID::Other; }
};

} // namespace kqu

#pragma once

#include "framework/corefoundation/CFObject.h"

#include <memory>
#include <string>
#include <utility>

namespace kqu {

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

/// A value of a kind that nothing here asks for: an array, a date, a descriptor.
class CFOther : public CFObject {
  public:
    [[nodiscard]] static Ref<CFOther> Make() { return std::make_shared<CFOther>(); }
    [[nodiscard]] CFTypeID TypeID() const override { return CFTypeID::Other; }
};

} // namespace kqu

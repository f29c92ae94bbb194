#pragma once

#include "framework/values/Object.h"

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace kqu {

/// A value that keeps the type it was given and is converted when it is read. Only numbers and
/// texts convert into one another; an object reads as empty text and as 0, and whatever is no
/// object reads as a nil one. No reading of a value raises, but the cast of an object.
class Variant {
  public:
    /// In the order of the alternatives of the value.
    enum class Type { Nil, String, Double, Int32, UInt32, Boolean, Object };

    Variant() = default;
    Variant(std::nullptr_t) {}
    Variant(std::string text) : value_(std::move(text)) {}
    Variant(std::string_view text) : value_(std::string(text)) {}
    Variant(const char* text) : value_(std::string(text)) {}
    Variant(double number) : value_(number) {}
    Variant(std::int32_t number) : value_(number) {}
    Variant(std::uint32_t number) : value_(number) {}
    /// Takes a bool and nothing that only converts to one, as every pointer does.
    template <std::same_as<bool> Flag>
    Variant(Flag flag) : value_(flag) {}
    /// A nil reference makes a nil value.
    template <std::derived_from<Object> T>
    Variant(Ref<T> object) {
        if (object)
            value_ = Ref<Object>(std::move(object));
    }

    [[nodiscard]] Type Kind() const { return static_cast<Type>(value_.index()); }
    [[nodiscard]] bool IsNil() const { return Kind() == Type::Nil; }

    /// A whole double as plain digits, another as the shortest decimal with a dot; a boolean as
    /// "True" or "False".
    [[nodiscard]] std::string StringValue() const;
    /// Text through `Val`; a boolean as 1 or 0.
    [[nodiscard]] double DoubleValue() const;
    /// As `DoubleValue`, without the fraction and within the range of the type.
    [[nodiscard]] std::int32_t Int32Value() const;
    [[nodiscard]] std::uint32_t UInt32Value() const;
    /// A number is true unless it is 0, a text if it is "true" in any letter case.
    [[nodiscard]] bool BooleanValue() const;
    /// Nil for whatever is no object.
    [[nodiscard]] Ref<Object> ObjectValue() const;

    /// Raises IllegalCastException for an object of another class.
    template <class T>
    [[nodiscard]] Ref<T> ObjectAs() const {
        return Cast<T>(ObjectValue());
    }

  private:
    std::variant<std::monostate, std::string, double, std::int32_t, std::uint32_t, bool,
                 Ref<Object>>
        value_;
};

} // namespace kqu

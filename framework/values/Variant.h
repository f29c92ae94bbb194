#pragma once

#include "framework/values/Object.h"

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace kqu {

/// A value that keeps its type and is converted only when it is read.
class Variant {
  public:
    enum class Type { Nil, String, Double, Int32, UInt32, Boolean, Object };

    Variant() = default;
    Variant(std::string text) : value_(std::move(text)) {}
    Variant(std::string_view text) : value_(std::string(text)) {}
    Variant(const char* text) : value_(std::string(text)) {}
    Variant(double number) : value_(number) {}
    Variant(std::int32_t number) : value_(number) {}
    Variant(std::uint32_t number) : value_(number) {}
    /// A bool and nothing that only converts to one, as every pointer does.
    template <std::same_as<bool> Truth>
    Variant(Truth truth) : value_(truth) {}
    template <class T>
    requires std::is_base_of_v<kqu::Object, T> Variant(Ref<T> object)
        : value_(Ref<kqu::Object>(std::move(object))) {}

    [[nodiscard]] Type Kind() const { return static_cast<Type>(value_.index()); }

    // Text is read as a number by its start; a double loses its fraction as an integer, saturating;
    // a whole double gives plain digits as text. Nil and objects read as empty text, 0 and false.
    [[nodiscard]] std::string StringValue() const;
    [[nodiscard]] double DoubleValue() const;
    [[nodiscard]] std::int32_t Int32Value() const;
    /// The object, or nil if the value is none.
    [[nodiscard]] Ref<kqu::Object> ObjectValue() const;
    /// The object as one of class T. Raises IllegalCastException for an object of another class.
    template <class T>
    [[nodiscard]] Ref<T> ObjectAs() const {
        return Cast<T>(ObjectValue());
    }

  private:
    std::variant<std::monostate, std::string, double, std::int32_t, std::uint32_t, bool,
                 Ref<kqu::Object>>
        value_;
};

} // namespace kqu

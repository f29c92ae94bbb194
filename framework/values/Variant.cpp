#include "framework/values/Variant.h"

#include "framework/values/Numbers.h"
#include "framework/values/Overloaded.h"
#include "framework/values/Text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace kqu {

namespace {
/// The shortest decimal that reads as the same double; plain digits for a whole one.
std::string DoubleAsText(double number) {
    if (number == 0.0)
        return "0";
    constexpr double largestPlain = 1e15;
    const bool plain = std::isfinite(number) && std::fabs(number) < largestPlain;
    std::array<char, 64> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                      plain ? std::chars_format::fixed : std::chars_format::general);
    if (result.ec != std::errc())
        return Format(number, "0");
    return {buffer.data(), result.ptr};
}
} // namespace

std::string Variant::StringValue() const {
    return std::visit(Overloaded{
                          [](const std::string& text) { return text; },
                          [](double number) { return DoubleAsText(number); },
                          [](auto number) { return std::to_string(number); },
                          [](bool truth) { return std::string(truth ? "True" : "False"); },
                          [](std::monostate) { return std::string(); },
                          [](const Ref<kqu::Object>&) { return std::string(); },
                      },
                      value_);
}

double Variant::DoubleValue() const {
    return std::visit(Overloaded{
                          [](const std::string& text) { return Val(text); },
                          [](auto number) { return static_cast<double>(number); },
                          [](std::monostate) { return 0.0; },
                          [](const Ref<kqu::Object>&) { return 0.0; },
                      },
                      value_);
}

std::int32_t Variant::Int32Value() const {
    return ToInt32(DoubleValue());
}

Ref<kqu::Object> Variant::ObjectValue() const {
    const auto* object = std::get_if<Ref<kqu::Object>>(&value_);
    return object != nullptr ? *object : nullptr;
}

} // namespace kqu

#include "framework/values/Dictionary.h"
#include "framework/values/Encodings.h"
#include "framework/values/Numbers.h"
#include "framework/values/Text.h"
#include "framework/values/Variant.h"
#include "platform/text/PlainText.h"
#include "tests/fuzz/Expect.h"

#include <algorithm>
#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>
#include <glib.h>

// The text functions on any bytes, against each other and, on plain ASCII, against the C++ library.

using namespace kqu;
using fuzz::Expect;

namespace {

/// The longest start that is a number to the C library too, and no word or hexadecimal.
double NumberByLibrary(const std::string& text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const std::size_t end = text.find_first_not_of("0123456789+-.eE", start);
    return std::strtod(text.substr(start, end - start).c_str(), nullptr);
}

/// Any bytes, or characters some of which equal each other without regard to case although they
/// differ in length, in between digits and separators.
std::string AnyText(FuzzedDataProvider& input, std::size_t most) {
    constexpr const char* pieces[] = {"k", "K",      "\u212A", "s",      "S",      "\u017F",
                                      "i", "I",      "\u0130", "\u0131", "\u00DF", "\xFF",
                                      ":", "\u00E9", "7",      "."};
    const bool isRaw = input.ConsumeBool();
    const std::string bytes = input.ConsumeRandomLengthString(most);
    if (isRaw)
        return bytes;
    std::string text;
    for (const char byte : bytes)
        text += pieces[static_cast<unsigned char>(byte) % std::size(pieces)];
    return text;
}

void CheckNumbers(FuzzedDataProvider& input, const std::string& text) {
    const double value = Val(text);
    Expect(!std::isnan(value) && value == NumberByLibrary(text));
    Expect(Variant(text).DoubleValue() == value && Variant(text).Int32Value() == ToInt32(value));
    Expect(Variant(text).UInt32Value() == ToUInt32(value));
    const auto whole = input.ConsumeIntegral<std::int32_t>();
    Expect(Val(Str(whole)) == whole && Variant(Str(whole)).Int32Value() == whole);

    const double tie = whole / 2 + (whole < 0 ? -0.5 : 0.5);
    Expect(Val(Format(tie, "0")) == (whole < 0 ? std::floor(tie) : std::ceil(tie)));
    const double number = input.ConsumeBool() ? value : input.ConsumeFloatingPoint<double>();
    const int places = input.ConsumeIntegralInRange(0, 20);
    const std::string mask = "#0." + std::string(static_cast<std::size_t>(places), '0');
    const std::string shown = Format(number, mask);
    if (!std::isfinite(number))
        return;
    Expect(shown.find('.') ==
           (places == 0 ? std::string::npos : shown.size() - 1U - static_cast<unsigned>(places)));
    Expect(std::fabs(Val(shown) - number) <=
           0.5 * std::pow(10.0, -places) * 1.000001 + std::fabs(number) * 1e-15);
    Expect((shown.front() == '-') <= (number < 0));
}

void CheckFields(const std::string& text, const std::string& find) {
    const int at = InStr(text, find);
    Expect(Contains(text, find) == (at != 0) && at >= 0 && at <= static_cast<int>(text.size()) + 1);
    const int fields = CountFields(text, find);
    Expect((fields == 0) == text.empty());
    Expect(NthField(text, find, fields + 1).empty() && NthField(text, find, 0).empty());
    std::string joined;
    std::string marked;
    for (int field = 1; field <= fields; ++field) {
        joined += NthField(text, find, field);
        marked += (field > 1 ? "|" : "") + NthField(text, find, field);
    }
    Expect(ReplaceAll(text, find, "") == joined && ReplaceAll(text, find, "|") == marked);
    if (find.empty())
        return;
    Expect((fields > 1) == (at > 0));
    if (at > 0)
        Expect(NthField(text, find, 1) == text.substr(0, static_cast<std::size_t>(at) - 1));
    if (fuzz::IsAscii(text) && fuzz::IsAscii(find))
        Expect(fuzz::LowerAscii(text).find(fuzz::LowerAscii(find)) + 1 ==
               static_cast<std::size_t>(at));
}

void CheckCase(const std::string& a, const std::string& b) {
    const bool equal = EqualsIgnoringCase(a, b);
    Expect(EqualsIgnoringCase(a, a) && EqualsIgnoringCase(b, a) == equal);
    Expect(!equal || a.empty() || InStr(a, b) == 1);
    if (fuzz::IsAscii(a) && fuzz::IsAscii(b))
        Expect(equal == (fuzz::LowerAscii(a) == fuzz::LowerAscii(b)));
    Dictionary dictionary;
    dictionary.SetValue(a, 1);
    dictionary.SetValue(b, 2);
    Expect(dictionary.Count() == (equal ? 1 : 2) && dictionary.Key(0) == a);
    Expect(dictionary.Value(a).Int32Value() == (equal ? 2 : 1));
    dictionary.Remove(b);
    Expect(dictionary.HasKey(a) != equal && !dictionary.HasKey(b));
}

void CheckCharacters(const std::string& text, std::size_t bytes) {
    const std::u16string wide = ToUtf16(text);
    Expect(wide.size() <= text.size());
    const platform::PlainText plain(text);
    Expect(g_utf8_validate(plain.utf8.data(), static_cast<gssize>(plain.utf8.size()), nullptr) !=
           0);
    Expect(plain.places.back().inSource == text.size() &&
           plain.places.back().inLine == plain.utf8.size());
    Expect(g_utf8_strlen(plain.utf8.data(), static_cast<gssize>(plain.utf8.size())) ==
           static_cast<glong>(plain.Length()));
    const std::string_view start = platform::StartOf(text, bytes);
    const std::string_view end = platform::EndOf(text, bytes);
    Expect(start.size() <= bytes && text.starts_with(start));
    Expect(end.size() <= bytes && text.ends_with(end));
    // At most one character less than would fit.
    Expect(start.size() + 6 > std::min(bytes, text.size()));
    Expect(end.size() + 6 > std::min(bytes, text.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto bytes = input.ConsumeIntegralInRange<std::size_t>(0, 300);
    const std::string find = AnyText(input, 8);
    const std::string text = AnyText(input, 400);
    CheckFields(text, find);
    CheckCase(text, find);
    CheckCase(find, AnyText(input, 8));
    CheckCharacters(text, bytes);
    CheckNumbers(input, text);
    return 0;
}

#include "framework/values/Dictionary.h"
#include "framework/values/Encodings.h"
#include "framework/values/Numbers.h"
#include "framework/values/Text.h"
#include "framework/values/Variant.h"
#include "platform/text/PlainText.h"
#include "tests/fuzz/Expect.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <glib.h>

// The text functions on any bytes, against each other and against the C library.

using namespace kqu;
using fuzz::Expect;

namespace {

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

/// What the C library reads of the same characters.
double Read(const std::string& text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const std::size_t end = text.find_first_not_of("0123456789+-.eE", start);
    return std::strtod(text.substr(start, end - start).c_str(), nullptr);
}

void CheckNumbers(FuzzedDataProvider& input, const std::string& text) {
    const double value = Val(text);
    Expect(!std::isnan(value) && value == Read(text));
    Expect(Variant(text).DoubleValue() == value && Variant(text).Int32Value() == ToInt32(value));
    Expect(Variant(text).UInt32Value() == ToUInt32(value));
    const auto whole = input.ConsumeIntegral<std::int32_t>();
    Expect(Val(Str(whole)) == whole && Variant(Str(whole)).Int32Value() == whole);
    const double number = input.ConsumeBool() ? value : input.ConsumeFloatingPoint<double>();
    const auto places = input.ConsumeIntegralInRange<std::size_t>(1, 20);
    const std::string shown = Format(number, "#0." + std::string(places, '0'));
    if (!std::isfinite(number))
        return;
    // Within half of the last digit, and a little for what doubles can't say.
    const double far = std::fabs(Val(shown) - number);
    Expect(far <= 0.5 * std::pow(10.0, -static_cast<double>(places)) + std::fabs(number) * 1e-15);
    Expect(shown.size() - shown.find('.') == places + 1);
}

void CheckFields(const std::string& text, const std::string& find) {
    const int at = InStr(text, find);
    Expect(Contains(text, find) == (at != 0) && at >= 0 && at <= static_cast<int>(text.size()) + 1);
    const int fields = CountFields(text, find);
    Expect((fields == 0) == text.empty() && (find.empty() || (fields > 1) == (at > 0)));
    Expect(NthField(text, find, fields + 1).empty() && NthField(text, find, 0).empty());
    std::string marked;
    for (int field = 1; field <= fields; ++field)
        marked += (field > 1 ? "|" : "") + NthField(text, find, field);
    Expect(ReplaceAll(text, find, "|") == marked);
}

void CheckCase(const std::string& a, const std::string& b) {
    const bool equal = EqualsIgnoringCase(a, b);
    Expect(EqualsIgnoringCase(a, a) && EqualsIgnoringCase(b, a) == equal);
    Expect(!equal || a.empty() || InStr(a, b) == 1);
    const auto isSame = [](char one, char other) {
        return std::tolower(one) == std::tolower(other);
    };
    Expect(!fuzz::IsAscii(a + b) ||
           equal == std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame));
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

#include "framework/corefoundation/ListForms.h"

#include "framework/corefoundation/CFPropertyList.h"
#include "platform/CDeleter.h"

#include <glib.h>

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kqu {

namespace {
/// An element that is open, with what was read of it so far. The document counts as one, without a
/// name.
struct Element {
    std::string name;
    std::string text = {};
    /// Of a dictionary: its entries, and the key whose value comes next.
    CFDictionary::Entries entries = {};
    std::optional<std::string> key = {};
    /// The value inside of the document or of the element "plist".
    Ref<CFObject> value = {};
};

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

Ref<CFObject> NumberOf(const Element& element) {
    const char* const text = element.text.c_str();
    const bool isHexadecimal = element.text.find_first_of("xX") != std::string::npos;
    char* end = nullptr;
    const double number =
        element.name == "real"
            ? g_ascii_strtod(text, &end)
            : static_cast<double>(g_ascii_strtoll(text, &end, isHexadecimal ? 16 : 10));
    return end != text && IsBlank(end) ? CFNumber::Make(number) : nullptr;
}

/// The value that a closed element stands for; nil if it has no meaning.
Ref<CFObject> ValueOf(Element& element) {
    const std::string& name = element.name;
    if (name == "string")
        return CFString::Make(std::move(element.text));
    if (name == "integer" || name == "real")
        return NumberOf(element);
    if (name == "date" || name == "data")
        return CFOther::Make();
    if (!IsBlank(element.text))
        return nullptr;
    if (name == "true" || name == "false")
        return CFBoolean::Make(name == "true");
    if (name == "array")
        return CFOther::Make();
    if (name == "dict" && !element.key)
        return CFDictionary::Make(std::move(element.entries));
    return name == "plist" ? element.value : nullptr;
}

class XmlReader {
  public:
    Ref<CFObject> Read(std::string_view text) {
        constexpr GMarkupParser parser{
            [](GMarkupParseContext*, const char* name, const char**, const char**, void* self,
               GError** error) { Check(static_cast<XmlReader*>(self)->Open(name), error); },
            [](GMarkupParseContext*, const char*, void* self, GError** error) {
                Check(static_cast<XmlReader*>(self)->Close(), error);
            },
            [](GMarkupParseContext*, const char* piece, gsize length, void* self, GError**) {
                static_cast<XmlReader*>(self)->open_.back().text.append(piece, length);
            },
            nullptr, nullptr};
        const platform::CPointer<GMarkupParseContext, g_markup_parse_context_free> context(
            g_markup_parse_context_new(&parser, G_MARKUP_TREAT_CDATA_AS_TEXT, this, nullptr));
        // The parser does not look at a text behind the last element.
        const bool isWhole =
            IsBlank(text.substr(text.rfind('>') + 1)) &&
            g_markup_parse_context_parse(context.get(), text.data(),
                                         static_cast<gssize>(text.size()), nullptr) != 0 &&
            g_markup_parse_context_end_parse(context.get(), nullptr) != 0;
        return isWhole ? open_.front().value : nullptr;
    }

  private:
    static void Check(bool isSound, GError** error) {
        if (!isSound)
            g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "");
    }

    bool Open(std::string name) {
        const Element& parent = open_.back();
        const bool isKey = name == "key";
        // Only the document holds a list.
        bool mayStandHere = name != "plist" || parent.name.empty();
        if (parent.name == "dict")
            mayStandHere = mayStandHere && isKey != parent.key.has_value();
        else if (parent.name == "array")
            mayStandHere = mayStandHere && !isKey;
        else
            mayStandHere = mayStandHere && !isKey && !parent.value &&
                           (parent.name.empty() || parent.name == "plist");
        open_.push_back({std::move(name)});
        return mayStandHere && open_.size() <= std::size_t{deepestList};
    }

    bool Close() {
        Element element = std::move(open_.back());
        open_.pop_back();
        Element& parent = open_.back();
        if (element.name == "key") {
            parent.key = std::move(element.text);
            return true;
        }
        parent.value = ValueOf(element);
        if (parent.key)
            parent.entries.emplace_back(*std::exchange(parent.key, std::nullopt), parent.value);
        return parent.value != nullptr;
    }

    std::vector<Element> open_ = {{""}};
};
} // namespace

Ref<CFObject> ReadXmlPropertyList(std::string_view text) {
    return XmlReader().Read(text);
}

} // namespace kqu

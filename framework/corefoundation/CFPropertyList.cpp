#include "framework/corefoundation/CFPropertyList.h"

#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFNumber.h"
#include "framework/corefoundation/CFOther.h"
#include "framework/corefoundation/CFString.h"
#include "framework/files/FileDescriptor.h"
#include "platform/CDeleter.h"

#include <algorithm>
#include <charconv>
#include <expat.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kqu {

namespace {
constexpr std::string_view blanks = " \t\r\n";

/// An element while it is open.
struct Element {
    std::string name;
    std::string text;
    CFDictionary::Entries entries;
    std::optional<std::string> key;
    Ref<CFObject> child;

    [[nodiscard]] bool HoldsText() const {
        return name == "key" || name == "string" || name == "integer" || name == "real" ||
               name == "date" || name == "data";
    }
    [[nodiscard]] bool MayHold(std::string_view other) const {
        if (name == "dict")
            return other != "plist" && (other == "key") == !key;
        return other != "plist" && other != "key" &&
               (name == "array" || (name == "plist" && !child));
    }
};

/// The whole text as a number, with a sign, blanks around it and, for an integer, in either base.
Ref<CFObject> NumberIn(std::string_view text, bool isReal) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    const bool isHexadecimal = !isReal && (text.starts_with("0x") || text.starts_with("0X"));
    if (isHexadecimal)
        text.remove_prefix(2);
    if (!isReal && !isHexadecimal && text.find_first_not_of("0123456789") != std::string_view::npos)
        return nullptr;
    double number = 0.0;
    const auto form = isHexadecimal ? std::chars_format::hex : std::chars_format::general;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number, form);
    if (text.empty() || end.ec != std::errc() || end.ptr != text.data() + text.size())
        return nullptr;
    return CFNumber::Make(isNegative ? -number : number);
}

/// What a closed element stands for; nil if it is broken.
Ref<CFObject> ValueOf(Element& element) {
    if (element.name == "true" || element.name == "false")
        return CFBoolean::Make(element.name == "true");
    if (element.name == "integer" || element.name == "real")
        return NumberIn(element.text, element.name == "real");
    if (element.name == "string")
        return CFString::Make(std::move(element.text));
    if (element.name == "dict")
        return element.key ? nullptr : CFDictionary::Make(std::move(element.entries));
    if (element.name == "plist")
        return element.child;
    return element.name == "array" || element.HoldsText() ? CFOther::Make() : nullptr;
}

class ListReader {
  public:
    [[nodiscard]] Ref<CFObject> Read(std::string_view bytes) {
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const char* name, const char**) {
                To(self).Guarded([&] { return To(self).Open(name); });
            },
            [](void* self, const char*) { To(self).Guarded([&] { return To(self).Close(); }); });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            const std::string_view piece(text, static_cast<std::size_t>(length));
            To(self).Guarded([&] { return To(self).Take(piece); });
        });
        // Entities of any other kind than XML's own.
        XML_SetSkippedEntityHandler(parser_.get(), [](void* self, const char*, int) {
            To(self).Guarded([] { return false; });
        });
        XML_SetStartDoctypeDeclHandler(
            parser_.get(), [](void* self, const char*, const char*, const char*, int hasOwn) {
                To(self).Guarded([&] { return hasOwn == 0; });
            });
        const bool isWhole = XML_Parse(parser_.get(), bytes.data(), static_cast<int>(bytes.size()),
                                       XML_TRUE) == XML_STATUS_OK;
        return isWhole ? root_ : nullptr;
    }

  private:
    static ListReader& To(void* self) { return *static_cast<ListReader*>(self); }

    /// Nothing unwinds through the library: what fails ends the reading.
    template <class Step>
    void Guarded(Step step) noexcept {
        bool isGood = false;
        try {
            isGood = step();
        } catch (...) {
        }
        if (!isGood)
            XML_StopParser(parser_.get(), XML_FALSE);
    }

    bool Open(std::string_view name) {
        if (open_.empty() ? name == "key" : !open_.back().MayHold(name))
            return false;
        open_.push_back({std::string(name), {}, {}, {}, nullptr});
        return open_.size() <= std::size_t{deepestList} + 1;
    }

    bool Take(std::string_view text) {
        if (open_.empty() || !open_.back().HoldsText())
            return text.find_first_not_of(blanks) == std::string_view::npos;
        open_.back().text += text;
        return true;
    }

    bool Close() {
        Element element = std::move(open_.back());
        open_.pop_back();
        if (element.name == "key") {
            open_.back().key = std::move(element.text);
            return true;
        }
        const Ref<CFObject> value = ValueOf(element);
        if (open_.empty())
            root_ = value;
        else if (Element& parent = open_.back(); parent.name == "dict")
            parent.entries.emplace_back(*std::exchange(parent.key, std::nullopt), value);
        else
            parent.child = value;
        return value != nullptr;
    }

    platform::CPointer<XML_ParserStruct, XML_ParserFree> parser_{XML_ParserCreate(nullptr)};
    std::vector<Element> open_;
    Ref<CFObject> root_;
};
} // namespace

Ref<CFObject> CFPropertyListParse(const CFData& data) {
    return data.Bytes().size() <= longestFile ? ListReader().Read(data.Bytes()) : nullptr;
}

} // namespace kqu

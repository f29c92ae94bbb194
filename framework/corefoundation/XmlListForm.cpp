#include "framework/corefoundation/XmlListForm.h"

#include "framework/corefoundation/PropertyListBounds.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kqu {

namespace {
constexpr std::string_view blanks = " \t\r\n";

enum class Kind { List, Dictionary, Array, Key, Text, Integer, Real, Truth, Unknown };

Kind KindOf(std::string_view name) {
    struct Known {
        std::string_view name;
        Kind kind;
    };
    static constexpr std::array<Known, 11> known{{{"plist", Kind::List},
                                                  {"dict", Kind::Dictionary},
                                                  {"array", Kind::Array},
                                                  {"key", Kind::Key},
                                                  {"string", Kind::Text},
                                                  {"date", Kind::Text},
                                                  {"data", Kind::Text},
                                                  {"integer", Kind::Integer},
                                                  {"real", Kind::Real},
                                                  {"true", Kind::Truth},
                                                  {"false", Kind::Truth}}};
    const auto* const found =
        std::find_if(known.begin(), known.end(), [&](const Known& k) { return k.name == name; });
    return found != known.end() ? found->kind : Kind::Unknown;
}

bool HoldsText(Kind kind) {
    return kind == Kind::Key || kind == Kind::Text || kind == Kind::Integer || kind == Kind::Real;
}

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(blanks) == std::string_view::npos;
}

/// Without the blanks around it and without its sign.
std::string_view Unsigned(std::string_view number) {
    if (IsBlank(number))
        return {};
    number.remove_prefix(number.find_first_not_of(blanks));
    number = number.substr(0, number.find_last_not_of(blanks) + 1);
    if (number.starts_with('-') || number.starts_with('+'))
        number.remove_prefix(1);
    return number;
}

bool IsInteger(std::string_view text) {
    std::string_view digits = Unsigned(text);
    std::string_view allowed = "0123456789";
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
        allowed = "0123456789abcdefABCDEF";
    }
    return !digits.empty() && digits.find_first_not_of(allowed) == std::string_view::npos;
}

bool IsReal(std::string_view text) {
    const std::string_view number = Unsigned(text);
    double value = 0.0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    return !number.empty() && result.ptr == number.data() + number.size();
}

/// Walks through the tags and keeps the elements that are open.
class TagWalk {
  public:
    explicit TagWalk(std::string_view text) : rest_(text) {}

    bool IsWholeList() {
        for (std::size_t tag = rest_.find('<'); tag != std::string_view::npos;
             tag = rest_.find('<'))
            if (!TakeText(rest_.substr(0, tag)) || !TakeTag(rest_.substr(tag + 1)))
                return false;
        return open_.empty() && rooted_ && IsBlank(rest_);
    }

  private:
    struct Element {
        std::string_view name;
        Kind kind;
        int children = 0;
        const char* content = nullptr;
    };

    /// Text may stand only where an element is for text. Each reference in it moves all that
    /// follows it.
    bool TakeText(std::string_view text) {
        if (open_.empty() || !HoldsText(open_.back().kind))
            return IsBlank(text);
        const auto references = static_cast<std::size_t>(std::count(text.begin(), text.end(), '&'));
        work_ += references * text.size();
        return work_ <= mostListWork;
    }

    bool SkipPast(std::string_view tag, std::string_view end) {
        const std::size_t found = tag.find(end);
        if (found == std::string_view::npos)
            return false;
        rest_ = tag.substr(found + end.size());
        return true;
    }

    bool TakeTag(std::string_view tag) {
        if (++tags_ > 2 * mostListValues)
            return false;
        if (tag.starts_with("?"))
            return SkipPast(tag, "?>");
        if (tag.starts_with("!--"))
            return SkipPast(tag.substr(3), "-->");
        if (tag.starts_with("![CDATA["))
            return !open_.empty() && HoldsText(open_.back().kind) && SkipPast(tag, "]]>");
        const std::size_t end = tag.find('>');
        if (end == std::string_view::npos)
            return false;
        rest_ = tag.substr(end + 1);
        const char* const tagStart = tag.data() - 1;
        tag = tag.substr(0, end);
        if (tag.starts_with("!"))
            // The document type, without declarations of its own.
            return tag.starts_with("!DOCTYPE") && !rooted_ &&
                   tag.find('[') == std::string_view::npos;
        if (tag.starts_with("/"))
            return Close(tag.substr(1, tag.find_last_not_of(blanks)), tagStart);
        return Open(tag);
    }

    bool Open(std::string_view tag) {
        const bool closesItself = tag.ends_with("/");
        if (closesItself)
            tag.remove_suffix(1);
        const std::string_view name = tag.substr(0, tag.find_first_of(blanks));
        const Kind kind = KindOf(name);
        if (kind == Kind::Unknown || !MayStandHere(kind) || open_.size() > deepestList)
            return false;
        rooted_ = true;
        open_.push_back({name, kind, 0, rest_.data()});
        return !closesItself || Close(name, rest_.data());
    }

    /// Whether an element may come next where the walk is; counts it there.
    bool MayStandHere(Kind kind) {
        if (open_.empty())
            return !rooted_ && kind != Kind::Key;
        Element& parent = open_.back();
        const int place = parent.children++;
        switch (parent.kind) {
        case Kind::List:
            return place == 0 && kind != Kind::Key && kind != Kind::List;
        case Kind::Array:
            return kind != Kind::Key && kind != Kind::List;
        case Kind::Dictionary:
            return kind != Kind::List && (kind == Kind::Key) == (place % 2 == 0);
        default:
            return false;
        }
    }

    bool Close(std::string_view name, const char* contentEnd) {
        if (open_.empty() || open_.back().name != name)
            return false;
        const Element element = open_.back();
        open_.pop_back();
        const std::string_view content(element.content,
                                       static_cast<std::size_t>(contentEnd - element.content));
        switch (element.kind) {
        case Kind::List:
            return element.children == 1;
        case Kind::Dictionary:
            return element.children % 2 == 0;
        case Kind::Integer:
            return IsInteger(content);
        case Kind::Real:
            return IsReal(content);
        default:
            return true;
        }
    }

    std::string_view rest_;
    std::vector<Element> open_;
    bool rooted_ = false;
    int tags_ = 0;
    std::uint64_t work_ = 0;
};
} // namespace

bool IsWholeXmlList(std::string_view text) {
    return text.find('\0') == std::string_view::npos && TagWalk(text).IsWholeList();
}

} // namespace kqu

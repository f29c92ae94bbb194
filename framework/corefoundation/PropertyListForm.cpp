#include "framework/corefoundation/PropertyListForm.h"

#include <cstddef>
#include <vector>

namespace kqu {

namespace {
constexpr std::string_view blanks = " \t\r\n";
constexpr std::size_t deepest = 200;

/// Walks through the tags of an XML text and keeps the elements that are open.
class TagWalk {
  public:
    explicit TagWalk(std::string_view text) : rest_(text) {}

    /// Whether every element is closed in its order and there is one at least.
    bool IsWellFormed() {
        while (const std::size_t start = NextTag())
            if (!TakeTag(rest_.substr(start)))
                return false;
        return open_.empty() && rooted_ && IsBlank(rest_);
    }

  private:
    static bool IsBlank(std::string_view text) {
        return text.find_first_not_of(blanks) == std::string_view::npos;
    }

    /// The position behind the next '<', or 0 if there is none. Text may stand only inside
    /// elements.
    std::size_t NextTag() {
        const std::size_t found = rest_.find('<');
        if (found == std::string_view::npos || (open_.empty() && !IsBlank(rest_.substr(0, found))))
            return 0;
        return found + 1;
    }

    bool SkipPast(std::string_view tag, std::string_view end) {
        const std::size_t found = tag.find(end);
        if (found == std::string_view::npos)
            return false;
        rest_ = tag.substr(found + end.size());
        return true;
    }

    bool TakeTag(std::string_view tag) {
        if (tag.starts_with("?"))
            return SkipPast(tag, "?>");
        if (tag.starts_with("!--"))
            return SkipPast(tag.substr(3), "-->");
        if (tag.starts_with("![CDATA["))
            return !open_.empty() && SkipPast(tag, "]]>");
        const std::size_t end = tag.find('>');
        if (end == std::string_view::npos)
            return false;
        rest_ = tag.substr(end + 1);
        tag = tag.substr(0, end);
        if (tag.starts_with("!"))
            // The document type, without declarations of its own.
            return tag.starts_with("!DOCTYPE") && !rooted_ &&
                   tag.find('[') == std::string_view::npos;
        return TakeElement(tag);
    }

    bool TakeElement(std::string_view tag) {
        if (tag.starts_with("/")) {
            tag.remove_prefix(1);
            if (open_.empty() || open_.back() != tag.substr(0, tag.find_first_of(blanks)))
                return false;
            open_.pop_back();
            return true;
        }
        if (open_.empty() && rooted_)
            return false;
        rooted_ = true;
        if (!tag.ends_with("/"))
            open_.push_back(tag.substr(0, tag.find_first_of(blanks)));
        return open_.size() <= deepest;
    }

    std::string_view rest_;
    std::vector<std::string_view> open_;
    bool rooted_ = false;
};
} // namespace

bool IsBinaryPropertyList(std::string_view bytes) {
    return bytes.starts_with("bplist");
}

bool HasPropertyListForm(std::string_view bytes) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (IsBinaryPropertyList(bytes))
        return true;
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    return TagWalk(bytes).IsWellFormed();
}

} // namespace kqu

#include "post/kqu-run/tools/RsyncFilter.h"

#include "post/posting/Text.h"

namespace kqu::run {

namespace {
constexpr std::size_t longestProgress = 256;
} // namespace

std::size_t RsyncProgressLength(std::string_view text) {
    static const post::Pattern progress("^ *[0-9.,'KMGTP]+ +[0-9]+% +[0-9.,kKMGTPB/s]+ +[0-9:?]+ *"
                                        "(\\(xfr#[0-9]+, (to|ir)-chk=[0-9]+/[0-9]+\\) *)?");
    const auto found = progress.In(text);
    return found.empty() ? 0 : found[0].size();
}

void RsyncFilter::Pass(std::string_view bytes, std::string& out) {
    while (!bytes.empty()) {
        const std::size_t end = held_.empty() ? bytes.find('\r') : bytes.find_first_of("\r\n");
        const std::string_view before = bytes.substr(0, end);
        if (held_.empty())
            Emit(before, out);
        else
            held_ += before;
        if (held_.size() > longestProgress) {
            Emit(held_, out);
            held_.clear();
        }
        if (end == std::string_view::npos)
            break;
        Decide(bytes[end], out);
        bytes.remove_prefix(end + 1);
    }
}

void RsyncFilter::Decide(char next, std::string& out) {
    std::string rest = held_;
    const std::size_t length =
        held_.empty() ? 0 : RsyncProgressLength(std::string_view(held_).substr(1));
    held_.clear();
    if (length > 0)
        rest.erase(0, length + 1);
    owesLineFeed_ = length > 0 ? !rest.empty() : owesLineFeed_;
    Emit(rest, out);
    if (next == '\r')
        held_ = next;
    else if (length == 0 || !rest.empty())
        Emit({&next, 1}, out);
}

void RsyncFilter::Emit(std::string_view text, std::string& out) {
    while (owesLineFeed_ && !text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == 0 && isAtLineStart_) {
            owesLineFeed_ = false;
            text.remove_prefix(1);
            break;
        }
        const std::string_view line = text.substr(0, end == text.npos ? end : end + 1);
        out += line;
        isAtLineStart_ = line.ends_with('\n');
        text.remove_prefix(line.size());
    }
    out += text;
}

void RsyncFilter::End(std::string& out) {
    const std::size_t length =
        held_.empty() ? 0 : RsyncProgressLength(std::string_view(held_).substr(1));
    Emit(length > 0 ? held_.substr(length + 1) : held_, out);
    held_.clear();
}

} // namespace kqu::run

#include "post/kqu-run/tools/RsyncFilter.h"

#include <algorithm>

namespace kqu::run {

namespace {
constexpr std::size_t longestProgress = 256;

/// Reads the parts of a progress line one after the other.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    /// At least `least` characters of the set.
    bool Run(std::string_view set, std::size_t least = 1) {
        const std::size_t end = std::min(text_.find_first_not_of(set, at_), text_.size());
        const bool isLong = end - at_ >= least;
        at_ = end;
        return isLong;
    }
    bool Mark(std::string_view mark) {
        if (!text_.substr(at_).starts_with(mark))
            return false;
        at_ += mark.size();
        return true;
    }
    [[nodiscard]] std::size_t At() const { return at_; }
    void GoTo(std::size_t at) { at_ = at; }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
};

constexpr std::string_view digits = "0123456789";
constexpr std::string_view amount = "0123456789.,'KMGTP";
constexpr std::string_view rate = "0123456789.,kKMGTPB/s";

bool Counts(Scanner& scan) {
    return scan.Mark("(xfr#") && scan.Run(digits) && scan.Mark(", ") &&
           (scan.Mark("to-chk=") || scan.Mark("ir-chk=")) && scan.Run(digits) && scan.Mark("/") &&
           scan.Run(digits) && scan.Mark(")");
}
} // namespace

std::size_t RsyncProgressLength(std::string_view text) {
    Scanner scan(text);
    scan.Run(" ", 0);
    if (!scan.Run(amount) || !scan.Run(" ") || !scan.Run(digits) || !scan.Mark("%") ||
        !scan.Run(" ") || !scan.Run(rate) || !scan.Run(" ") || !scan.Run("0123456789:?"))
        return 0;
    scan.Run(" ", 0);
    const std::size_t withoutCounts = scan.At();
    if (!Counts(scan)) {
        scan.GoTo(withoutCounts);
        return withoutCounts;
    }
    scan.Run(" ", 0);
    return scan.At();
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

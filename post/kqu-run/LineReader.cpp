#include "post/kqu-run/LineReader.h"

#include <algorithm>
#include <utility>

namespace kqu::run {

namespace {
constexpr std::size_t keptBytes = 32768;
constexpr std::string_view lineEnds = "\n\r\b";
constexpr char escape = '\x1b';

bool IsText(char c) {
    return static_cast<unsigned char>(c) >= ' ' || c == '\t';
}

/// The length of the terminal sequence (ECMA-48) that the text begins with, or 0 if it has no end
/// yet.
std::size_t SequenceLength(std::string_view text) {
    if (text.size() < 2)
        return 0;
    if (text[1] != '[')
        return 2;
    const auto* const end =
        std::find_if(text.begin() + 2, text.end(), [](char c) { return c < ' ' || c >= '@'; });
    return end == text.end() ? 0 : static_cast<std::size_t>(end - text.begin()) + 1;
}
} // namespace

void LineReader::Add(std::string_view bytes) {
    if (bytes.size() >= keptBytes) {
        bytes_ = bytes.substr(bytes.size() - keptBytes);
        beginningIsLost_ = true;
        return;
    }
    bytes_ += bytes;
    if (bytes_.size() > 2 * keptBytes) {
        bytes_.erase(0, bytes_.size() - keptBytes);
        beginningIsLost_ = true;
    }
}

void LineReader::Lines(const Take& take) {
    std::string line;
    std::size_t begin = 0; // of the line that has no end yet
    const auto end = [&](std::size_t next) {
        if (!line.empty() && !beginningIsLost_)
            take(line);
        line.clear();
        beginningIsLost_ = false;
        shown_ = 0;
        begin = next;
    };
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        const char c = bytes_[i];
        if (c == escape) {
            const std::size_t length = SequenceLength(std::string_view(bytes_).substr(i));
            if (length == 0)
                break;
            i += length - 1;
            if (bytes_[i] != 'm')
                end(i + 1);
        } else if (lineEnds.find(c) != std::string_view::npos) {
            end(i + 1);
        } else if (IsText(c)) {
            line += c;
        }
    }
    bytes_.erase(0, begin);
    if (line.size() > shown_ && !beginningIsLost_)
        take(line);
    shown_ = line.size();
}

} // namespace kqu::run

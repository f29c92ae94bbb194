#include "post/kqu-run/LineReader.h"

#include "post/posting/Text.h"

#include <algorithm>

namespace kqu::run {

namespace {
constexpr std::size_t keptBytes = 32768;
/// What ends a line: also a cursor movement of a terminal (ECMA-48), but not a colour.
constexpr const char* lineEnd = "[\n\r\b]|\x1b(\\[[0-?]*[ -/]*[@-ln-~]|[^[])";

/// A line without colours, control characters, and a sequence that has no end yet.
std::string Plain(std::string_view line) {
    std::string plain;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (line[i] == '\x1b')
            i = std::min(line.find('m', i), line.size() - 1);
        else if (static_cast<unsigned char>(line[i]) >= ' ' || line[i] == '\t')
            plain += line[i];
    return plain;
}
} // namespace

void LineReader::Add(std::string_view bytes) {
    bytes_ += bytes;
    if (bytes_.size() > 2 * keptBytes) {
        bytes_.erase(0, bytes_.size() - keptBytes);
        beginningIsLost_ = true;
    }
}

void LineReader::Lines(const Take& take) {
    static const post::Pattern ends(lineEnd);
    std::string_view rest = bytes_;
    for (auto end = ends.In(rest); !end.empty(); end = ends.In(rest)) {
        const auto length = static_cast<std::size_t>(end[0].data() - rest.data());
        const std::string line = Plain(rest.substr(0, length));
        if (!line.empty() && !beginningIsLost_)
            take(line);
        beginningIsLost_ = false;
        shown_ = 0;
        rest.remove_prefix(length + end[0].size());
    }
    bytes_.erase(0, bytes_.size() - rest.size());
    const std::string line = Plain(bytes_);
    if (line.size() > shown_ && !beginningIsLost_)
        take(line);
    shown_ = line.size();
}

} // namespace kqu::run

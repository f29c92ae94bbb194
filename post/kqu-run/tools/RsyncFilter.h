#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kqu::run {

/// The length of what rsync prints for --info=progress2 or --progress at the beginning of the text,
/// without the carriage return: "   1,200,000   2%  139.14MB/s    0:00:00 (xfr#4, to-chk=27/34)".
/// 0 if it is something else.
[[nodiscard]] std::size_t RsyncProgressLength(std::string_view text);

/// Takes rsync's progress out. It can be told with certainty: rsync begins it with a carriage
/// return, which nothing else of its output holds, since it writes that character of a file's name
/// in octal; and it ends it with a line feed before it prints anything else.
class RsyncFilter {
  public:
    /// Appends what of the bytes is to go on.
    void Pass(std::string_view bytes, std::string& out);
    /// The stream has ended: appends what was held back.
    void End(std::string& out);

  private:
    void Decide(char next, std::string& out);
    void Emit(std::string_view text, std::string& out);

    /// From a carriage return on, until the next character of its kind; empty outside.
    std::string held_;
    /// Where both outputs are one stream, an error message may come between a progress and the line
    /// feed that ends it; that one then makes an empty line, the next that there is.
    bool owesLineFeed_ = false;
    bool isAtLineStart_ = false;
};

} // namespace kqu::run

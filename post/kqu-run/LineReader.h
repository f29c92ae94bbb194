#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kqu::run {

/// Makes lines of what a tool prints for eyes: a line ends at a line feed, carriage return,
/// backspace or a cursor movement of a terminal; colours are taken out. It keeps only the newest
/// bytes, so that a flood costs nothing: a line whose beginning was lost is left out.
class LineReader {
  public:
    using Take = std::function<void(std::string_view line)>;

    void Add(std::string_view bytes);
    /// Hands over the lines that have come since the last time, without empty ones. A last line
    /// that has no end yet is handed over as far as it goes, and again when it has grown.
    void Lines(const Take& take);

  private:
    std::string bytes_;
    bool beginningIsLost_ = false;
    std::size_t shown_ = 0;
};

} // namespace kqu::run

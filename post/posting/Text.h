#pragma once

#include <regex.h>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::post {

/// A POSIX extended regular expression over bytes: the commands stay in the locale "C".
class Pattern {
  public:
    explicit Pattern(const char* expression) { regcomp(&compiled_, expression, REG_EXTENDED); }
    ~Pattern() { regfree(&compiled_); }
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    /// The first place in the text that matches, and behind it the expression's groups. Nothing
    /// where no place matches; a group that took no part is empty.
    [[nodiscard]] std::vector<std::string_view> In(std::string_view text) const;

  private:
    regex_t compiled_{};
};

/// Whether a bus would take the text: UTF-8 by RFC 3629. A NUL, which a bus refuses, is not looked
/// for.
[[nodiscard]] bool IsUtf8(std::string_view text);

/// The words of a text, which blanks divide.
[[nodiscard]] std::vector<std::string_view> Words(std::string_view text);

/// The texts as execve(2) takes them. They belong to the vector.
[[nodiscard]] std::vector<char*> Pointers(std::vector<std::string>& texts);

} // namespace kqu::post

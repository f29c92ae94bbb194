#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kqu::post {

/// A tool that posts status notifications: the name it has on the command line, the object string
/// that names it on the wire, and the keys that the messenger knows of it. Keys are exact in case.
struct Tool {
    std::string_view name;
    std::string_view object;
    std::span<const std::string_view> keys;
};

/// All tools.
[[nodiscard]] std::span<const Tool> Tools();
/// The tool of that name, or nil.
[[nodiscard]] const Tool* FindTool(std::string_view name);
/// The same for a command line: raises UsageError if there is none.
[[nodiscard]] const Tool* ToolOf(const char* name);
/// "scanner, backup, defragmenter".
[[nodiscard]] std::string ToolNames();
[[nodiscard]] bool HasKey(const Tool& tool, std::string_view key);

} // namespace kqu::post

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kqu::platform {

/// All that a file of the kernel (below /proc or /sys) says now; nothing if it can't be read.
[[nodiscard]] std::optional<std::string> TextOfFile(const std::filesystem::path& path);

/// The same for a file that holds one value: without the end of its line.
[[nodiscard]] std::optional<std::string> ValueOfFile(const std::filesystem::path& path);

/// What a folder holds, links not followed; nothing if it can't be read.
[[nodiscard]] std::vector<std::filesystem::path> EntriesOf(const std::filesystem::path& folder);

} // namespace kqu::platform

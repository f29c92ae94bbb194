#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kqu::platform {

/// The value in a file of the kernel (below /proc or /sys), without the end of its line; nothing if
/// it can't be read.
[[nodiscard]] std::optional<std::string> ValueOfFile(const std::filesystem::path& path);

/// What a folder holds, links not followed; nothing if it can't be read.
[[nodiscard]] std::vector<std::filesystem::path> EntriesOf(const std::filesystem::path& folder);

} // namespace kqu::platform

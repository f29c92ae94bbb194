#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kqu::run {

/// What /proc tells of other processes; nothing of those that belong to somebody else.

/// The process of that name among the process and all that descend from it, or 0. A name as the
/// kernel keeps it: cut to 15 bytes.
[[nodiscard]] pid_t FindProcess(pid_t root, std::string_view name);
/// The process and all that descend from it.
[[nodiscard]] std::vector<pid_t> Family(pid_t root);

/// Where in its file a descriptor of a process is, in bytes.
[[nodiscard]] std::optional<std::uint64_t> PositionOf(pid_t process, int descriptor);
/// How many bytes a process has read, of all files.
[[nodiscard]] std::optional<std::uint64_t> BytesReadBy(pid_t process);

struct OpenFile {
    int descriptor = 0;
    std::string path;
};
/// The files and devices that a process has open, by absolute path; no pipes, sockets and
/// terminals.
[[nodiscard]] std::vector<OpenFile> OpenFilesOf(pid_t process);

} // namespace kqu::run

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace kqu::run {

/// What /proc tells of other processes; nothing of those that belong to somebody else.

/// The process of that name among the process and all that descend from it, or 0. A name as the
/// kernel keeps it: cut to 15 bytes.
[[nodiscard]] pid_t FindProcess(pid_t root, std::string_view name);
/// The process and all that descend from it.
[[nodiscard]] std::vector<pid_t> Family(pid_t root);

/// The arguments of a process, and the folder that its relative paths begin at.
[[nodiscard]] std::vector<std::string> ArgumentsOf(pid_t process);
[[nodiscard]] std::string WorkingFolderOf(pid_t process);

/// How many bytes a process has read and written, of all files.
struct Amounts {
    double read = 0, written = 0;
};
[[nodiscard]] std::optional<Amounts> AmountsOf(pid_t process);

struct OpenFile {
    int descriptor = 0;
    std::string path;
    std::uint64_t position = 0;
    bool isWritten = false;
    /// What it is, whatever its name: device and inode.
    std::pair<dev_t, ino_t> identity;
    /// In bytes, of a regular file or a block device; else 0.
    std::uint64_t size = 0;
};
/// The files and devices that a process has open, by absolute path; no pipes, sockets and
/// terminals.
[[nodiscard]] std::vector<OpenFile> OpenFilesOf(pid_t process);

} // namespace kqu::run

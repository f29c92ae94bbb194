#pragma once

#include "post/kqu-run/Naming.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kqu::run {

/// A volume, or a disk without one.
struct Volume {
    /// As a person would say it: its label, else the last component of where it is mounted, else
    /// the disk's model, else the kernel's name.
    std::string name;
    /// The kernel's name of the disk, such as "sda1"; empty if it is on none.
    std::string disk;
    /// Empty if it isn't mounted.
    std::string mountPoint;
    std::uint64_t filesInUse = 0;
    /// It is an image, and named after its file.
    bool isNamedAfterFile = false;

    [[nodiscard]] Name Shown() const { return {name, isNamedAfterFile ? "" : name}; }
};

/// The mounted volume that a file is on.
[[nodiscard]] std::optional<Volume> VolumeOfFile(const std::string& path);
/// The disk that is named: a block device, or an image file.
[[nodiscard]] std::optional<Volume> VolumeOfDisk(const std::string& path);

/// A folder as a person would say it: the volume's name if the path is where it is mounted, else
/// the folder's own. A path on another machine is named with that.
[[nodiscard]] Name FolderName(const std::string& path);
[[nodiscard]] Name FolderNames(const std::vector<std::string>& paths);

/// The volume's name where the path is where one is mounted, else the absolute path without links
/// and without a slash at its end.
[[nodiscard]] Name LocalDestination(const std::string& path);
/// The same of a place that may as well be on another machine, see PlaceName; empty stays empty.
[[nodiscard]] Name Destination(const std::string& place);

/// The size of a regular file or block device in bytes.
[[nodiscard]] std::optional<std::uint64_t> SizeOf(const std::string& path);

} // namespace kqu::run

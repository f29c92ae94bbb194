#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kqu::platform {

/// One line of the kernel's table of mounts.
struct Mount {
    /// Numbers of the device, "8:1"; the first is 0 where the file system has no device of its own.
    std::string device;
    std::string mountPoint;
    /// What was mounted: a device's path where there is one.
    std::string source;

    /// Whether the mount may be that of a block device. Some file systems (btrfs) live on one and
    /// have no device number all the same.
    [[nodiscard]] bool MayBeOnBlockDevice() const {
        return !device.starts_with("0:") || source.starts_with("/dev/");
    }
    bool operator==(const Mount&) const = default;
};

/// The lines of a table in the form of /proc/self/mountinfo, as proc(5) describes it, in its order
/// and with its octal escapes resolved. Lines of another form are passed over.
[[nodiscard]] std::vector<Mount> ParseMountTable(std::string_view mountInfo);

} // namespace kqu::platform

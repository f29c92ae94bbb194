#pragma once

#include "platform/interfaces/MountedVolume.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kqu::platform {

/// A mounted block device.
struct Volume {
    std::int32_t reference = 0;
    /// The kernel's name of the device: "sda1", "dm-0". Empty only for a boot volume that is on no
    /// block device.
    std::string disk;
    /// The first place where it was mounted.
    std::string mountPoint;
    bool operator==(const Volume&) const = default;
};

/// The machine's mounted volumes: real block devices alone, each once. Neither the list nor the
/// names ask a file system: one that no longer answers would block the program.
class Volumes {
  public:
    /// All paths are taken as they are below `root`, mount points included.
    explicit Volumes(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// The volumes that are mounted now, in the order of the kernel's table.
    [[nodiscard]] std::vector<Volume> Mounted();
    /// The volume of that number, if it is mounted now; the boot volume is always.
    [[nodiscard]] std::optional<Volume> Find(std::int32_t reference);

    /// The label of the volume's file system, else the last component of the mount point, else "/".
    [[nodiscard]] std::string NameOf(const Volume& volume) const;

    /// Number of files on the volume, which is that of the inodes in use; saturated where it needs
    /// more than 32 bits. Nothing if its file system can't be asked. Asks that one.
    [[nodiscard]] std::optional<std::uint32_t> FileCount(const Volume& volume) const;

    [[nodiscard]] std::filesystem::path NativePath(const std::string& path) const {
        return root_ / std::filesystem::path(path).relative_path();
    }

  private:
    /// The kernel's name of the block device with these numbers ("8:1"), or else of what was
    /// mounted; empty if the mount is on no block device.
    [[nodiscard]] std::string DiskOf(const std::string& numbers, const std::string& source) const;
    [[nodiscard]] std::int32_t NumberOf(const std::string& disk, const std::string& mountPoint);
    void ForgetAllBut(const std::vector<Volume>& mounted);

    std::filesystem::path root_;
    /// The numbers of what is mounted, by disk.
    std::map<std::string, std::int32_t> numbers_;
    std::int32_t lastNumber_ = bootVolume;
};

} // namespace kqu::platform

#include "post/kqu-run/Volumes.h"

#include "platform/CDeleter.h"
#include "post/kqu-run/Naming.h"
#include "post/posting/Descriptor.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <libmount.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

constexpr std::size_t extSuperblock = 1024;
constexpr std::size_t extMagicAt = extSuperblock + 56;
constexpr std::size_t extLabelAt = extSuperblock + 120;
constexpr std::size_t extLabelSize = 16;
constexpr std::uint64_t sector = 512;

std::string FirstLine(const files::path& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    line.erase(line.find_last_not_of(" \t") + 1);
    return line;
}

std::string NumberOf(dev_t device) {
    return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

files::path SysFolder(dev_t device) {
    return files::path("/sys/dev/block") / NumberOf(device);
}

std::string KernelName(dev_t device) {
    std::error_code failure;
    return files::canonical(SysFolder(device), failure).filename().string();
}

/// The label in the links that udev makes.
std::string LinkedLabel(dev_t device) {
    std::error_code failure;
    for (const auto& link : files::directory_iterator("/dev/disk/by-label", failure)) {
        struct stat status {};
        if (stat(link.path().c_str(), &status) == 0 && status.st_rdev == device)
            return WithoutEscapes(link.path().filename().string());
    }
    return {};
}

std::string LabelIn(const std::string& path) {
    const Descriptor disk(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::string bytes(extLabelAt + extLabelSize, '\0');
    const ssize_t got = disk ? pread(disk.Number(), bytes.data(), bytes.size(), 0) : 0;
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return ExtLabel(bytes);
}

/// The disk's maker's name; a part of it has the kernel's name behind that.
std::string Model(dev_t device) {
    const std::string own = FirstLine(SysFolder(device) / "device/model");
    const std::string whole = FirstLine(SysFolder(device) / "../device/model");
    const std::string kernelName = KernelName(device);
    return !own.empty() ? own : !whole.empty() ? whole + " (" + kernelName + ")" : kernelName;
}

/// Where a block device is mounted first.
std::string MountPointOf(dev_t device) {
    const platform::CPointer<libmnt_table, mnt_unref_table> table(
        mnt_new_table_from_file("/proc/self/mountinfo"));
    libmnt_fs* const mount =
        table ? mnt_table_find_devno(table.get(), device, MNT_ITER_FORWARD) : nullptr;
    return mount != nullptr ? mnt_fs_get_target(mount) : "";
}

Volume Described(dev_t device, const std::string& path) {
    Volume volume;
    volume.disk = KernelName(device);
    volume.mountPoint = MountPointOf(device);
    volume.name = LinkedLabel(device);
    if (volume.name.empty())
        volume.name = LabelIn(path);
    if (volume.name.empty() && !volume.mountPoint.empty())
        volume.name = LastComponent(volume.mountPoint);
    if (volume.name.empty())
        volume.name = Model(device);
    struct statvfs status {};
    if (!volume.mountPoint.empty() && statvfs(volume.mountPoint.c_str(), &status) == 0)
        volume.filesInUse = status.f_files - status.f_ffree;
    return volume;
}
} // namespace

std::string ExtLabel(std::string_view firstBytes) {
    if (firstBytes.size() < extLabelAt + extLabelSize ||
        firstBytes.substr(extMagicAt, 2) != "\x53\xEF")
        return {};
    const std::string_view label = firstBytes.substr(extLabelAt, extLabelSize);
    return std::string(label.substr(0, label.find('\0')));
}

std::optional<Volume> VolumeOfFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    if (major(status.st_dev) == 0) // a file system that is on no single disk
        return std::nullopt;
    return Described(status.st_dev, "/dev/block/" + NumberOf(status.st_dev));
}

std::optional<Volume> VolumeOfDisk(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    if (S_ISBLK(status.st_mode))
        return Described(status.st_rdev, path);
    if (!S_ISREG(status.st_mode))
        return std::nullopt;
    const std::string label = LabelIn(path);
    return Volume{label.empty() ? LastComponent(path) : label, {}, {}, 0, label.empty()};
}

Name FolderName(const std::string& path) {
    if (IsElsewhere(path))
        return PlaceName(path, {});
    std::error_code failure;
    const files::path whole = files::canonical(path, failure);
    if (failure)
        return {LastComponent(path), {}};
    const auto volume = VolumeOfFile(path);
    const std::string open = volume ? volume->name : "";
    return {volume && volume->mountPoint == whole ? open : LastComponent(whole.string()), open};
}

Name FolderNames(const std::vector<std::string>& paths) {
    std::vector<std::string> full, open;
    for (const std::string& path : paths) {
        const Name name = FolderName(path);
        full.push_back(name.full);
        if (std::find(open.begin(), open.end(), name.open) == open.end())
            open.push_back(name.open);
    }
    return {Joined(full), Joined(open)};
}

std::optional<std::uint64_t> SizeOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    if (S_ISREG(status.st_mode))
        return static_cast<std::uint64_t>(status.st_size);
    if (!S_ISBLK(status.st_mode))
        return std::nullopt;
    const std::string sectors = FirstLine(SysFolder(status.st_rdev) / "size");
    return std::strtoull(sectors.c_str(), nullptr, 10) * sector;
}

} // namespace kqu::run

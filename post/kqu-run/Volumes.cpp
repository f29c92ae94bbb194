#include "post/kqu-run/Volumes.h"

#include "platform/CDeleter.h"
#include "post/posting/Descriptor.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <mntent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <systemd/sd-device.h>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

using Device = platform::CPointer<sd_device, sd_device_unref>;

Device DeviceOf(dev_t number) {
    sd_device* device = nullptr;
    sd_device_new_from_devnum(&device, 'b', number);
    return Device(device);
}

/// What one of the functions of sd-device knows of a device, which may be nil.
std::string Known(auto get, sd_device* device, auto... arguments) {
    const char* text = nullptr;
    const bool isKnown = device != nullptr && get(device, arguments..., &text) >= 0;
    std::string known = isKnown && text != nullptr ? text : "";
    known.erase(known.find_last_not_of(" \t") + 1);
    return known;
}

/// A text as udev writes it, where \x20 is a blank.
std::string WithoutEscapes(std::string text) {
    for (std::size_t at = text.find("\\x"); at != text.npos; at = text.find("\\x", at + 1))
        text.replace(at, 4, 1,
                     static_cast<char>(std::strtol(text.substr(at + 2, 2).c_str(), nullptr, 16)));
    return text;
}

/// The label of a file system of the ext family, from its superblock.
std::string LabelIn(const std::string& path) {
    constexpr std::size_t magicAt = 1024 + 56, size = 80, labelAt = 64;
    const Descriptor disk(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::string bytes(size, '\0');
    if (!disk || pread(disk.Number(), bytes.data(), size, magicAt) != size ||
        !bytes.starts_with("\x53\xEF"))
        return {};
    return bytes.c_str() + labelAt;
}

/// The disk's maker's name; a part of it has the kernel's name behind that.
std::string Model(sd_device* device, const std::string& kernelName) {
    constexpr const char* model = "device/model";
    sd_device* parent = nullptr;
    const std::string own = Known(sd_device_get_sysattr_value, device, model);
    if (!own.empty() || device == nullptr || sd_device_get_parent(device, &parent) < 0)
        return own.empty() ? kernelName : own;
    const std::string whole = Known(sd_device_get_sysattr_value, parent, model);
    return whole.empty() ? kernelName : whole + " (" + kernelName + ")";
}

/// Where a block device is mounted first.
std::string MountPointOf(dev_t device) {
    const platform::CPointer<FILE, endmntent> table(setmntent("/proc/self/mounts", "r"));
    struct stat status {};
    while (const mntent* const mount = table ? getmntent(table.get()) : nullptr)
        if (stat(mount->mnt_fsname, &status) == 0 && S_ISBLK(status.st_mode) &&
            status.st_rdev == device)
            return mount->mnt_dir;
    return {};
}

Volume Described(dev_t number, const std::string& path) {
    const Device device = DeviceOf(number);
    Volume volume;
    volume.disk = Known(sd_device_get_sysname, device.get());
    volume.mountPoint = MountPointOf(number);
    volume.name =
        WithoutEscapes(Known(sd_device_get_property_value, device.get(), "ID_FS_LABEL_ENC"));
    if (volume.name.empty())
        volume.name = LabelIn(path);
    if (volume.name.empty() && !volume.mountPoint.empty())
        volume.name = LastComponent(volume.mountPoint);
    if (volume.name.empty())
        volume.name = Model(device.get(), volume.disk);
    struct statvfs status {};
    if (!volume.mountPoint.empty() && statvfs(volume.mountPoint.c_str(), &status) == 0)
        volume.filesInUse = status.f_files - status.f_ffree;
    return volume;
}
} // namespace

std::optional<Volume> VolumeOfFile(const std::string& path) {
    struct stat status {};
    // The major number 0 is that of a file system that is on no single disk.
    if (stat(path.c_str(), &status) != 0 || major(status.st_dev) == 0)
        return std::nullopt;
    return Described(status.st_dev, "/dev/block/" + std::to_string(major(status.st_dev)) + ":" +
                                        std::to_string(minor(status.st_dev)));
}

std::optional<Volume> VolumeOfDisk(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISBLK(status.st_mode))
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

Name LocalDestination(const std::string& path) {
    std::error_code failure;
    std::string whole = files::weakly_canonical(files::absolute(path, failure), failure).string();
    if (failure || whole.empty())
        return {path, {}};
    while (whole.size() > 1 && whole.ends_with('/'))
        whole.pop_back();
    // What is not there yet will be on the volume of the folder above it.
    files::path nearest = whole;
    while (!files::exists(nearest, failure) && nearest.has_relative_path())
        nearest = nearest.parent_path();
    const auto volume = VolumeOfFile(nearest.string());
    const std::string open = volume ? volume->name : "";
    return {volume && volume->mountPoint == whole ? open : whole, open};
}

Name Destination(const std::string& place) {
    const char* home = std::getenv("HOME");
    const Name name = PlaceName(place, home != nullptr ? home : "~");
    const bool isNamedLocal = place.starts_with("local:") || place.starts_with("file://");
    if (name.full.empty() || (IsElsewhere(place) && !isNamedLocal))
        return name;
    return LocalDestination(name.full);
}

std::optional<std::uint64_t> SizeOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    if (S_ISREG(status.st_mode))
        return static_cast<std::uint64_t>(status.st_size);
    if (!S_ISBLK(status.st_mode))
        return std::nullopt;
    const std::string sectors =
        Known(sd_device_get_sysattr_value, DeviceOf(status.st_rdev).get(), "size");
    return std::strtoull(sectors.c_str(), nullptr, 10) * 512; // sectors, whatever the disk has
}

} // namespace kqu::run

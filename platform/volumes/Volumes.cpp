#include "platform/volumes/Volumes.h"

#include "platform/files/SmallFiles.h"

#include <algorithm>
#include <limits>
#include <system_error>

namespace kqu::platform {

namespace {
namespace fs = std::filesystem;

/// The last component of what a link points to; empty if there is no such link.
std::string LinkName(const fs::path& link) {
    std::error_code error;
    return fs::read_symlink(link, error).filename().string();
}

/// A name as udev writes it in a file name: odd characters as \x and two hexadecimal digits.
std::string WithoutEscapes(const std::string& name) {
    constexpr std::size_t escapeLength = 4;
    constexpr std::string_view digits = "0123456789abcdef";
    std::string plain;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool escape = name.compare(i, 2, "\\x") == 0 && i + escapeLength <= name.size();
        const std::size_t high = escape ? digits.find(name[i + 2]) : std::string_view::npos;
        const std::size_t low = escape ? digits.find(name[i + 3]) : std::string_view::npos;
        if (high == std::string_view::npos || low == std::string_view::npos) {
            plain += name[i];
            continue;
        }
        plain += static_cast<char>(high * digits.size() + low);
        i += escapeLength - 1;
    }
    return plain;
}
} // namespace

std::uint32_t FilesInUse(const struct statvfs& status) {
    // File systems without a fixed number of inodes tell of none at all.
    if (status.f_ffree >= status.f_files)
        return 0;
    constexpr fsfilcnt_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(status.f_files - status.f_ffree, most));
}

std::vector<Volume> Volumes::Mounted() {
    std::vector<Volume> mounted;
    const auto table = TextOfFile(root_ / "proc/self/mountinfo");
    if (!table)
        return mounted;
    for (const Mount& mount : ParseMountTable(*table)) {
        const std::string disk = mount.MayBeOnBlockDevice() ? DiskOf(mount) : std::string();
        const bool isKnown = std::any_of(mounted.begin(), mounted.end(),
                                         [&](const Volume& other) { return other.disk == disk; });
        if (!disk.empty() && !isKnown)
            mounted.push_back({NumberOf(disk, mount.mountPoint), disk, mount.mountPoint});
    }
    ForgetAllBut(mounted);
    return mounted;
}

std::optional<Volume> Volumes::Find(std::int32_t reference) {
    for (const Volume& volume : Mounted())
        if (volume.reference == reference)
            return volume;
    if (reference == bootVolume)
        return Volume{bootVolume, "", "/"};
    return std::nullopt;
}

std::string Volumes::DiskOf(const Mount& mount) const {
    if (const std::string disk = LinkName(root_ / "sys/dev/block" / mount.device); !disk.empty())
        return disk;
    // Without a number of its own the file system is known by what was mounted. A device may be
    // known by many names: the others are links to the kernel's.
    const fs::path source = mount.source;
    const std::string target = LinkName(NativePath(mount.source));
    const std::string disk = target.empty() ? source.filename().string() : target;
    std::error_code error;
    return fs::exists(root_ / "sys/class/block" / disk, error) ? disk : "";
}

std::int32_t Volumes::NumberOf(const std::string& disk, const std::string& mountPoint) {
    if (const auto known = numbers_.find(disk); known != numbers_.end())
        return known->second;
    const bool bootIsTaken = std::any_of(numbers_.begin(), numbers_.end(), [](const auto& entry) {
        return entry.second == bootVolume;
    });
    const bool isBoot = mountPoint == "/" && !bootIsTaken;
    return numbers_[disk] = isBoot ? bootVolume : --lastNumber_;
}

void Volumes::ForgetAllBut(const std::vector<Volume>& mounted) {
    std::erase_if(numbers_, [&](const auto& entry) {
        return std::none_of(mounted.begin(), mounted.end(),
                            [&](const Volume& volume) { return volume.disk == entry.first; });
    });
}

std::string Volumes::NameOf(const Volume& volume) const {
    for (const fs::path& label : EntriesOf(root_ / "dev/disk/by-label"))
        if (!volume.disk.empty() && LinkName(label) == volume.disk)
            return WithoutEscapes(label.filename().string());
    const std::string last = fs::path(volume.mountPoint).filename().string();
    return last.empty() ? "/" : last;
}

std::optional<std::uint32_t> Volumes::FileCount(const Volume& volume) const {
    struct statvfs status {};
    if (statvfs(NativePath(volume.mountPoint).c_str(), &status) != 0)
        return std::nullopt;
    return FilesInUse(status);
}

} // namespace kqu::platform

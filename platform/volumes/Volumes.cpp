#include "platform/volumes/Volumes.h"

#include "platform/CDeleter.h"
#include "platform/files/SmallFiles.h"

#include <algorithm>
#include <libmount.h>
#include <limits>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <system_error>

namespace kqu::platform {

namespace {
namespace fs = std::filesystem;
using MountTable = CPointer<libmnt_table, mnt_unref_table>;
using MountIterator = CPointer<libmnt_iter, mnt_free_iter>;

std::string TextOr(const char* text) {
    return text != nullptr ? text : "";
}

/// The last component of what a link points to; empty if there is no such link.
std::string LinkName(const fs::path& link) {
    std::error_code error;
    return fs::read_symlink(link, error).filename().string();
}

/// A name as udev writes it in a file name: odd characters as \x and two hexadecimal digits.
std::string PlainLabel(const std::string& name) {
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

std::vector<Volume> Volumes::Mounted() {
    std::vector<Volume> mounted;
    const MountTable table(mnt_new_table_from_file((root_ / "proc/self/mountinfo").c_str()));
    const MountIterator next(mnt_new_iter(MNT_ITER_FORWARD));
    libmnt_fs* mount = nullptr;
    while (table && mnt_table_next_fs(table.get(), next.get(), &mount) == 0) {
        const dev_t device = mnt_fs_get_devno(mount);
        const std::string numbers =
            std::to_string(major(device)) + ":" + std::to_string(minor(device));
        const std::string disk = DiskOf(numbers, TextOr(mnt_fs_get_source(mount)));
        const std::string mountPoint = TextOr(mnt_fs_get_target(mount));
        const bool isKnown = std::any_of(mounted.begin(), mounted.end(),
                                         [&](const Volume& other) { return other.disk == disk; });
        if (!disk.empty() && !isKnown)
            mounted.push_back({NumberOf(disk, mountPoint), disk, mountPoint});
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

std::string Volumes::DiskOf(const std::string& numbers, const std::string& source) const {
    if (const std::string disk = LinkName(root_ / "sys/dev/block" / numbers); !disk.empty())
        return disk;
    // Some file systems (btrfs) live on a block device and have no numbers of their own. They are
    // known by what was mounted. A device may have many names: the others are links to the
    // kernel's.
    if (!source.starts_with("/dev/"))
        return "";
    const std::string target = LinkName(NativePath(source));
    const std::string disk = target.empty() ? fs::path(source).filename().string() : target;
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
            return PlainLabel(label.filename().string());
    const std::string last = fs::path(volume.mountPoint).filename().string();
    return last.empty() ? "/" : last;
}

std::optional<std::uint32_t> Volumes::FileCount(const Volume& volume) const {
    struct statvfs status {};
    if (statvfs(NativePath(volume.mountPoint).c_str(), &status) != 0)
        return std::nullopt;
    // File systems without a fixed number of inodes report none at all.
    if (status.f_ffree >= status.f_files)
        return 0;
    constexpr fsfilcnt_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(status.f_files - status.f_ffree, most));
}

} // namespace kqu::platform

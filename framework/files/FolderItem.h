#pragma once

#include "framework/values/Object.h"
#include "platform/interfaces/MountedVolume.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kqu {

class FileStream;

/// How a path is written: as it is, or as a shell wants it, with a backslash before odd characters.
enum class PathForm { Absolute, Shell };

/// A file or folder, whether or not it exists. Absolute paths are resolved under one root, which is
/// "/" in the program.
class FolderItem : public Object {
  public:
    explicit FolderItem(std::filesystem::path path) : path_(std::move(path)) {}
    /// A mounted volume.
    explicit FolderItem(const platform::MountedVolume& volume);

    /// Moves the root of all absolute paths.
    static void SetRoot(std::filesystem::path root);

    /// The last component of the path; for a volume the volume's own name.
    [[nodiscard]] std::string Name() const;
    /// The path as the program sees it, and as the system does.
    [[nodiscard]] std::string AbsolutePath() const { return path_.string(); }
    [[nodiscard]] std::filesystem::path NativePath() const;

    /// Links are followed: one that leads nowhere is no file.
    [[nodiscard]] bool Exists() const;
    /// Bytes in a file; 0 if it has no size.
    [[nodiscard]] std::uintmax_t Length() const;
    /// An item of that name in this folder; nil for a name that none can have.
    [[nodiscard]] Ref<FolderItem> Child(std::string_view name) const;
    /// Nil for the root and for a volume.
    [[nodiscard]] Ref<FolderItem> Parent() const;
    /// Its failure is not reported.
    void Delete() const;

    /// The number of the volume that the item is reached through. What is got by a path, also below
    /// the place where another volume is mounted, is reached through the boot volume.
    [[nodiscard]] std::int32_t MacVRefNum() const { return volume_; }
    /// 1 for the root of a volume, 0 for all other items: they are known by their paths alone.
    [[nodiscard]] std::int32_t MacDirID() const { return IsVolumeRoot() ? 1 : 0; }

    // Streams; nil if the file can't be opened. A folder never can.
    [[nodiscard]] Ref<FileStream> OpenAsTextFile() const;
    /// A new empty file, in place of a file or link that is there; no link is followed.
    [[nodiscard]] Ref<FileStream> CreateTextFile() const;

    // Of no meaning here: accepted and dropped.
    void SetMacCreator(const std::string&) const {}
    void SetMacType(const std::string&) const {}

  private:
    [[nodiscard]] bool IsVolumeRoot() const;

    std::filesystem::path path_;
    std::int32_t volume_ = platform::bootVolume;
    /// Of a volume; empty for all other items.
    std::string volumeName_;
};

/// The item at an absolute path; nil for an empty path or one that is not absolute.
[[nodiscard]] Ref<FolderItem> GetFolderItem(std::string_view path, PathForm form);

} // namespace kqu

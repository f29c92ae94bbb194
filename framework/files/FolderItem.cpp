#include "framework/files/FolderItem.h"

#include "framework/files/Streams.h"

#include <memory>
#include <system_error>

namespace kqu {

namespace {
std::filesystem::path& Root() {
    static std::filesystem::path root = "/";
    return root;
}

std::string WithoutBackslashes(std::string_view path) {
    std::string plain;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '\\' && i + 1 < path.size())
            ++i;
        plain += path[i];
    }
    return plain;
}
} // namespace

void FolderItem::SetRoot(std::filesystem::path root) {
    Root() = std::move(root);
}

FolderItem::FolderItem(const platform::MountedVolume& volume)
    : path_(volume.mountPoint), volume_(volume.reference), volumeName_(volume.name) {}

bool FolderItem::IsVolumeRoot() const {
    return !volumeName_.empty() || path_ == path_.root_path();
}

std::string FolderItem::Name() const {
    if (!volumeName_.empty())
        return volumeName_;
    return path_ == path_.root_path() ? path_.string() : path_.filename().string();
}

std::filesystem::path FolderItem::NativePath() const {
    return Root() / path_.relative_path();
}

bool FolderItem::Exists() const {
    std::error_code error;
    return std::filesystem::exists(NativePath(), error);
}

std::uintmax_t FolderItem::Length() const {
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(NativePath(), error);
    return error ? 0 : length;
}

Ref<FolderItem> FolderItem::Child(std::string_view name) const {
    // A slash would lead elsewhere, even out of this folder.
    if (name.empty() || name.find('/') != std::string_view::npos)
        return nullptr;
    return std::make_shared<FolderItem>(path_ / name);
}

Ref<FolderItem> FolderItem::Parent() const {
    return IsVolumeRoot() ? nullptr : std::make_shared<FolderItem>(path_.parent_path());
}

void FolderItem::Delete() const {
    std::error_code ignored;
    std::filesystem::remove(NativePath(), ignored);
}

Ref<FileStream> FolderItem::OpenAsTextFile() const {
    return FileStream::Open(NativePath(), FileStream::Access::Read);
}

Ref<FileStream> FolderItem::CreateTextFile() const {
    return FileStream::Open(NativePath(), FileStream::Access::CreateNew);
}

Ref<FolderItem> GetFolderItem(std::string_view path, PathForm form) {
    const std::filesystem::path plain =
        form == PathForm::Shell ? WithoutBackslashes(path) : std::string(path);
    if (!plain.is_absolute())
        return nullptr;
    const std::filesystem::path normal = plain.lexically_normal();
    // A slash at the end would stand for a component without a name.
    const bool endsInSlash = !normal.has_filename() && normal.has_relative_path();
    return std::make_shared<FolderItem>(endsInSlash ? normal.parent_path() : normal);
}

} // namespace kqu

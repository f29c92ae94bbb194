#pragma once

#include "framework/values/Object.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kqu {

class BinaryStream;
class TextInputStream;
class TextOutputStream;

/// How a path is written: as it is, or as a shell wants it, with a backslash before odd characters.
enum class PathForm { Absolute, Shell };

/// A file or folder, whether or not it exists. Absolute paths are resolved under one root, which is
/// "/" in the program.
class FolderItem : public Object {
  public:
    explicit FolderItem(std::filesystem::path path) : path_(std::move(path)) {}

    /// Moves the root of all absolute paths.
    static void SetRoot(std::filesystem::path root);

    /// The last component of the path; for a volume the volume's own name.
    [[nodiscard]] std::string Name() const;
    /// The path as the program sees it, and as the system does.
    [[nodiscard]] std::string AbsolutePath() const { return path_.string(); }
    [[nodiscard]] std::filesystem::path NativePath() const;

    [[nodiscard]] bool Exists() const;
    [[nodiscard]] bool IsFolder() const;
    /// An item of that name in this folder; nil for an empty name.
    [[nodiscard]] Ref<FolderItem> Child(std::string_view name) const;
    /// Nil for the root.
    [[nodiscard]] Ref<FolderItem> Parent() const;
    /// Its failure is not reported.
    void Delete() const;

    // Streams; nil if the file can't be opened. A folder never can.
    [[nodiscard]] Ref<TextInputStream> OpenAsTextFile() const;
    [[nodiscard]] Ref<BinaryStream> OpenAsBinaryFile() const;
    /// A new empty file, in place of one that is there.
    [[nodiscard]] Ref<TextOutputStream> CreateTextFile() const;

    // Of no meaning here: accepted and dropped.
    void SetMacCreator(const std::string&) const {}
    void SetMacType(const std::string&) const {}

  private:
    std::filesystem::path path_;
};

/// The item at an absolute path; nil for an empty path or one that is not absolute.
[[nodiscard]] Ref<FolderItem> GetFolderItem(std::string_view path, PathForm form);

} // namespace kqu

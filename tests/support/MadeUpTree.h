#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace kqu::simulation {

/// A folder that stands for the root of a file system, with made-up files of the kernel and of udev
/// in it. It goes when the object goes.
class MadeUpTree {
  public:
    /// Raises std::filesystem::filesystem_error if there is no place for it.
    MadeUpTree() {
        std::string pattern = std::filesystem::temp_directory_path() / "kqu-tree-XXXXXX";
        root_ = std::filesystem::canonical(mkdtemp(pattern.data()) ? pattern : "");
    }
    ~MadeUpTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    MadeUpTree(const MadeUpTree&) = delete;
    MadeUpTree& operator=(const MadeUpTree&) = delete;

    [[nodiscard]] const std::filesystem::path& Root() const { return root_; }
    /// Writes a file, making its folders; the path is relative to the root.
    void Write(const std::string& path, const std::string& text) const {
        std::filesystem::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path, std::ios::binary) << text;
    }
    /// Makes a symbolic link, and the folders that lead to it.
    void Link(const std::string& path, const std::string& target) const {
        std::filesystem::create_directories((root_ / path).parent_path());
        std::filesystem::create_symlink(target, root_ / path);
    }

  private:
    std::filesystem::path root_;
};

} // namespace kqu::simulation

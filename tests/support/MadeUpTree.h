#pragma once

#include <filesystem>
#include <string>

namespace kqu::simulation {

/// A folder that stands for the root of a file system, with made-up files of the kernel and of udev
/// in it. It goes when the object goes.
class MadeUpTree {
  public:
    MadeUpTree();
    ~MadeUpTree();
    MadeUpTree(const MadeUpTree&) = delete;
    MadeUpTree& operator=(const MadeUpTree&) = delete;

    [[nodiscard]] const std::filesystem::path& Root() const { return root_; }
    /// Writes a file, making its folders; the path is relative to the root.
    void Write(const std::string& path, const std::string& text) const;
    /// Makes a symbolic link, and the folders that lead to it.
    void Link(const std::string& path, const std::string& target) const;

  private:
    std::filesystem::path root_;
};

} // namespace kqu::simulation

#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace kqu {

/// None of the suite's files has more bytes, but for the look-up file: what has is none of them.
inline constexpr std::size_t longestFile = std::size_t{1} << 20U;

/// An open file, closed with its last breath and never inherited by a child process.
class FileDescriptor {
  public:
    enum class Access { Read, CreateNew };

    /// Opens a regular file or a device, or makes a new file in place of the file or link of that
    /// name. IsOpen says whether that worked. Folders are not opened.
    FileDescriptor(const std::filesystem::path& path, Access access);
    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }
    /// Bytes in the file, as far as it has a size.
    [[nodiscard]] std::size_t Length() const;
    /// Up to `count` bytes, fewer only at the end or after an error.
    [[nodiscard]] std::string Read(std::size_t count);
    /// All that is left; nothing if that is more than `limit` bytes.
    [[nodiscard]] std::string ReadAll(std::size_t limit);
    /// Writes as much of it as the disk takes; what it doesn't take is lost without a word.
    void Write(std::string_view bytes);
    void Close();

  private:
    int descriptor_ = -1;
};

} // namespace kqu

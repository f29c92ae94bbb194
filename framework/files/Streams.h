#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace kqu {

/// None of the suite's files has more bytes, but for the look-up file: what has is none of them.
inline constexpr std::size_t longestFile = std::size_t{1} << 20U;

/// A regular file or a device that is open, closed with its last breath and never inherited by a
/// child process. Bytes are those of the file, in whatever encoding.
class FileStream : public Object {
  public:
    enum class Access { Read, CreateNew };

    /// Opens a file for reading, or makes a new one for writing in place of the file or link of
    /// that name. Nil if that fails, and for a folder.
    [[nodiscard]] static Ref<FileStream> Open(const std::filesystem::path& path, Access access);
    /// Takes the descriptor over.
    explicit FileStream(int descriptor) : descriptor_(descriptor) {}
    ~FileStream() override;

    /// All that is left; nothing if that is more than `limit` bytes.
    [[nodiscard]] std::string ReadAll(std::size_t limit = longestFile);
    /// Writes as much of it as the disk takes; what it doesn't take is lost without a word.
    void Write(std::string_view bytes);
    void Close();

  private:
    int descriptor_;
};

} // namespace kqu

#pragma once

#include "framework/files/FileDescriptor.h"
#include "framework/values/Object.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kqu {

/// A file of bytes, open for reading.
class BinaryStream : public Object, public FileDescriptor {
  public:
    explicit BinaryStream(const std::filesystem::path& path) : FileDescriptor(path, Access::Read) {}
    /// Up to `count` bytes, fewer at the end; nothing if more than `longestFile` are asked for.
    [[nodiscard]] std::string Read(std::size_t count) {
        return count > longestFile ? std::string() : FileDescriptor::Read(count);
    }
};

/// A text file, open for reading. Bytes come as they are, in whatever encoding.
class TextInputStream : public Object, public FileDescriptor {
  public:
    explicit TextInputStream(const std::filesystem::path& path)
        : FileDescriptor(path, Access::Read) {}
    /// The whole text; nothing if it has more than `limit` bytes.
    [[nodiscard]] std::string ReadAll(std::size_t limit = longestFile) {
        return FileDescriptor::ReadAll(limit);
    }
};

/// A new text file, open for writing. What the disk doesn't take is lost without a word.
class TextOutputStream : public Object, public FileDescriptor {
  public:
    explicit TextOutputStream(const std::filesystem::path& path)
        : FileDescriptor(path, Access::CreateNew) {}
};

} // namespace kqu

#pragma once

#include "framework/files/FileDescriptor.h"
#include "framework/values/Object.h"

#include <cstddef>
#include <string>

namespace kqu {

/// A file of bytes, open for reading.
class BinaryStream : public Object {
  public:
    explicit BinaryStream(const std::filesystem::path& path)
        : file_(path, FileDescriptor::Access::Read) {}
    [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
    [[nodiscard]] std::size_t Length() const { return file_.Length(); }
    /// Up to `count` bytes, fewer at the end; nothing if more than `longestFile` are asked for.
    [[nodiscard]] std::string Read(std::size_t count) {
        return count > longestFile ? std::string() : file_.Read(count);
    }
    void Close() { file_.Close(); }

  private:
    FileDescriptor file_;
};

} // namespace kqu

#pragma once

#include "framework/files/FileDescriptor.h"
#include "framework/values/Object.h"

#include <cstddef>
#include <string>

namespace kqu {

/// A text file, open for reading. Bytes come as they are, in whatever encoding.
class TextInputStream : public Object {
  public:
    explicit TextInputStream(const std::filesystem::path& path)
        : file_(path, FileDescriptor::Access::Read) {}
    [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
    /// The whole text; nothing if it has more than `limit` bytes.
    [[nodiscard]] std::string ReadAll(std::size_t limit = longestFile) {
        return file_.ReadAll(limit);
    }
    void Close() { file_.Close(); }

  private:
    FileDescriptor file_;
};

} // namespace kqu

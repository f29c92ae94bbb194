#pragma once

#include "framework/files/FileDescriptor.h"
#include "framework/values/Object.h"

#include <string>

namespace kqu {

/// A text file, open for reading. Bytes come as they are, in whatever encoding.
class TextInputStream : public Object {
  public:
    explicit TextInputStream(const std::filesystem::path& path)
        : file_(path, FileDescriptor::Access::Read) {}
    [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
    [[nodiscard]] std::string ReadAll() { return file_.Read(std::string::npos); }
    void Close() { file_.Close(); }

  private:
    FileDescriptor file_;
};

} // namespace kqu

#pragma once

#include "framework/files/FileDescriptor.h"
#include "framework/values/Object.h"

#include <string_view>

namespace kqu {

/// A new text file, open for writing.
class TextOutputStream : public Object {
  public:
    explicit TextOutputStream(const std::filesystem::path& path)
        : file_(path, FileDescriptor::Access::CreateNew) {}
    [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
    /// What the disk doesn't take is lost without a word.
    void Write(std::string_view text) { file_.Write(text); }
    void Close() { file_.Close(); }

  private:
    FileDescriptor file_;
};

} // namespace kqu

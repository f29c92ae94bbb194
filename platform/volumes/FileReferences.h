#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace kqu::platform {

/// References to files in blocks of 80 bytes that have no meaning to their users.
///
/// A block holds a mark and a running number; the path stays here, with those of the latest
/// references. Blocks are made to be used soon: one whose path has been forgotten, and one that was
/// never written, name no file.
class FileReferences {
  public:
    static constexpr std::size_t blockSize = 80;
    static constexpr std::size_t remembered = 256;

    /// Writes a whole block that refers to the path.
    void Write(std::string path, std::byte* block);
    [[nodiscard]] std::optional<std::string> PathOf(const std::byte* block) const;

  private:
    std::deque<std::string> paths_;
    /// The number of the oldest path that is remembered.
    std::uint64_t first_ = 0;
};

} // namespace kqu::platform

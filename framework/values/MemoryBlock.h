#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kqu {

/// A block of raw bytes, zero-filled when made. Offsets and sizes are bytes, numbers are in the
/// machine's byte order. An access beyond the block raises OutOfBoundsException.
class MemoryBlock : public Object {
  public:
    explicit MemoryBlock(std::size_t size) : bytes_(size) {}

    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] std::byte* Data() { return bytes_.data(); }
    [[nodiscard]] const std::byte* Data() const { return bytes_.data(); }
    /// The same bytes, as the functions that fill texts want them.
    [[nodiscard]] char* CharData() { return reinterpret_cast<char*>(bytes_.data()); }

    [[nodiscard]] std::int32_t Int32Value(std::size_t offset) const {
        return static_cast<std::int32_t>(UInt32Value(offset));
    }
    void SetInt32Value(std::size_t offset, std::int32_t value);
    [[nodiscard]] std::uint32_t UInt32Value(std::size_t offset) const;
    /// The text up to the first NUL, or to the end of the block.
    [[nodiscard]] std::string CString(std::size_t offset) const;
    [[nodiscard]] std::string StringValue(std::size_t offset, std::size_t length) const;

  private:
    void Check(std::size_t offset, std::size_t length) const;

    std::vector<std::byte> bytes_;
};

} // namespace kqu

#pragma once

#include "framework/values/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kqu {

/// A block of raw bytes of a fixed size, zero-filled at first. Numbers stand in it in the machine's
/// own byte order and need not be aligned. Whatever reaches outside raises OutOfBoundsException.
class MemoryBlock : public Object {
  public:
    explicit MemoryBlock(std::size_t size) : bytes_(size) {}

    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] std::byte* Data() { return bytes_.data(); }
    [[nodiscard]] const std::byte* Data() const { return bytes_.data(); }
    /// The same bytes, as the buffer of a C string.
    [[nodiscard]] char* CharData() { return reinterpret_cast<char*>(bytes_.data()); }

    [[nodiscard]] std::int32_t Int32Value(std::int64_t offset) const;
    void SetInt32Value(std::int64_t offset, std::int32_t value);
    [[nodiscard]] std::uint32_t UInt32Value(std::int64_t offset) const;
    void SetUInt32Value(std::int64_t offset, std::uint32_t value);

    /// The text from `offset` up to the first NUL, or to the end of the block if there is none.
    [[nodiscard]] std::string CString(std::int64_t offset) const;
    /// `length` bytes from `offset`, NULs and all.
    [[nodiscard]] std::string StringValue(std::int64_t offset, std::int64_t length) const;

  private:
    void CheckRange(std::int64_t offset, std::int64_t length) const;

    std::vector<std::byte> bytes_;
};

} // namespace kqu

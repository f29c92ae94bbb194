#include "framework/values/MemoryBlock.h"

#include <cstring>

namespace kqu {

void MemoryBlock::Check(std::size_t offset, std::size_t length) const {
    if (offset > bytes_.size() || length > bytes_.size() - offset)
        throw OutOfBoundsException("an access beyond the end of a memory block");
}

std::uint32_t MemoryBlock::UInt32Value(std::size_t offset) const {
    std::uint32_t value = 0;
    Check(offset, sizeof value);
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
}

void MemoryBlock::SetInt32Value(std::size_t offset, std::int32_t value) {
    Check(offset, sizeof value);
    std::memcpy(bytes_.data() + offset, &value, sizeof value);
}

std::string MemoryBlock::CString(std::size_t offset) const {
    Check(offset, 0);
    const std::string rest = StringValue(offset, bytes_.size() - offset);
    return rest.substr(0, rest.find('\0'));
}

std::string MemoryBlock::StringValue(std::size_t offset, std::size_t length) const {
    Check(offset, length);
    return {reinterpret_cast<const char*>(bytes_.data()) + offset, length};
}

} // namespace kqu

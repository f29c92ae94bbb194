#pragma once

#include "framework/corefoundation/CFPropertyList.h"

#include <string>
#include <vector>

namespace kqu::testing_support {

[[nodiscard]] inline Ref<CFObject> ParseList(const std::string& bytes) {
    return CFPropertyListParse(*CFData::Make(bytes));
}

/// A whole number, the high byte first.
[[nodiscard]] inline std::string Bytes(std::size_t number, int size) {
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
    return bytes;
}

/// A binary list of these objects, the first one on top; references in them take two bytes.
[[nodiscard]] inline std::string BinaryList(const std::vector<std::string>& objects) {
    std::string list = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += Bytes(list.size(), 4);
        list += object;
    }
    const std::size_t table = list.size();
    return list + offsets + std::string(6, '\0') + '\4' + '\2' + Bytes(objects.size(), 8) +
           Bytes(0, 8) + Bytes(table, 8);
}

} // namespace kqu::testing_support

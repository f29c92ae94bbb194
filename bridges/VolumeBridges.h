#pragma once

#include "framework/values/MemoryBlock.h"
#include "framework/values/Object.h"

#include <cstdint>
#include <string>

namespace kqu {

/// The disk name of a mounted volume ("sda1"), or an empty string. With `release` the platform's
/// string is released after its conversion.
[[nodiscard]] std::string GetBSDNameForVRef(std::int32_t vRefNum, bool release);

/// The text behind a 4-byte block that holds a string reference; empty if it needs more than 1023
/// bytes. The string is released if that was asked for and its conversion succeeded.
[[nodiscard]] std::string CFStrRefToStr(const Ref<MemoryBlock>& reference, bool release);

} // namespace kqu

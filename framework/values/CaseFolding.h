#pragma once

#include <cstddef>
#include <string_view>

// Text without regard to letter case: simple Unicode case folding, one character for one character
// and the same in every locale. A byte that is no part of well-formed UTF-8 stands for itself.

namespace kqu {

/// The folded character at `position` when its first byte is not ASCII; moves behind it.
/// Bytes that are not UTF-8 come back one by one, above all characters of Unicode.
[[nodiscard]] char32_t FoldBeyondAscii(std::string_view text, std::size_t& position);

/// The folded character at `position`, which lies inside `text`; moves behind it.
[[nodiscard]] inline char32_t FoldNext(std::string_view text, std::size_t& position) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte >= 0x80)
        return FoldBeyondAscii(text, position);
    ++position;
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

/// Equal for texts that are equal without regard to letter case.
[[nodiscard]] std::size_t FoldedHash(std::string_view text);

} // namespace kqu

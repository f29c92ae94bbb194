#pragma once

#include <cstddef>
#include <map>
#include <span>

namespace kqu {

/// The PNG files that were compiled into the program, by the ids of their pictures. The build makes
/// the table from the artwork.
[[nodiscard]] std::map<int, std::span<const std::byte>> EmbeddedPictures();

} // namespace kqu

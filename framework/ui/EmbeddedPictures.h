#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <utility>

namespace kqu {

/// The PNG files that were compiled into the program, by the ids and the scales of their
/// pictures. The build makes the table from the artwork.
[[nodiscard]] std::map<std::pair<int, int>, std::span<const std::byte>> EmbeddedPictures();

} // namespace kqu

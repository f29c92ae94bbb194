#pragma once

#include <string>

namespace kqu::run {

/// The volume's name where the path is where one is mounted, else the absolute path without links
/// and without a slash at its end.
[[nodiscard]] std::string LocalDestination(const std::string& path);

/// The same of a place that may as well be on another machine, see PlaceName; empty stays empty.
[[nodiscard]] std::string Destination(const std::string& place);

} // namespace kqu::run

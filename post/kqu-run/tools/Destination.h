#pragma once

#include "post/kqu-run/Naming.h"

#include <string>

namespace kqu::run {

/// The volume's name where the path is where one is mounted, else the absolute path without links
/// and without a slash at its end.
[[nodiscard]] Name LocalDestination(const std::string& path);

/// The same of a place that may as well be on another machine, see PlaceName; empty stays empty.
[[nodiscard]] Name Destination(const std::string& place);

} // namespace kqu::run

#pragma once

#include "tests/lives/Life.h"

#include <functional>
#include <string>

namespace kqu::lives {

/// Plays a life and returns its complaint, "what: how"; empty if it went well.
using Trial = std::function<std::string(const Life&)>;

/// A life with fewer and plainer events in which the same is wrong as in the given one: no event
/// of it can be left out.
[[nodiscard]] Life Shrink(Life life, const Trial& trial);

} // namespace kqu::lives

#pragma once

#include "tests/lives/Life.h"

#include <cstdint>
#include <string>

namespace kqu::lives {

/// How a life went.
struct Outcome {
    /// What was wrong first, as "what: how, when"; empty for a life without fault.
    std::string complaint;
    /// Events that happened, and times that the whole program was compared with what it must be.
    std::uint64_t events = 0;
    std::uint64_t looks = 0;
    /// How long the program lived, in its own time.
    double seconds = 0;
};

/// Lets the events of a life happen to the program on a machine of its own and looks at it after
/// each, and wherever handlers nest. A life that does not end by itself is ended.
[[nodiscard]] Outcome Play(const Life& life);

} // namespace kqu::lives

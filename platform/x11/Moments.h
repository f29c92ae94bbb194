#pragma once

#include "platform/interfaces/Waiting.h"

#include <algorithm>
#include <optional>

namespace kqu::platform {

/// The first of two moments; one that is not set never comes.
[[nodiscard]] inline std::optional<Moment> Earlier(std::optional<Moment> one,
                                                   std::optional<Moment> other) {
    return one && other ? std::min(one, other) : one ? one : other;
}

} // namespace kqu::platform

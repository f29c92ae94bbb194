#pragma once

#include "platform/interfaces/Registration.h"

#include <cstdint>
#include <functional>

namespace kqu::platform {

/// The system's power messages and their answers.
class PowerMessages {
  public:
    /// Given a message, tells whether the listener objects to it.
    using Listener = std::function<bool(std::int32_t message)>;

    virtual ~PowerMessages() = default;

    /// Each power message is delivered to `listener` from the event loop and its answer acted on;
    /// never from within this call.
    [[nodiscard]] virtual Registration Listen(Listener listener) = 0;

    /// Something that the answer may depend on has changed: the listener is asked again soon.
    virtual void AnswerMayHaveChanged() = 0;
};

} // namespace kqu::platform

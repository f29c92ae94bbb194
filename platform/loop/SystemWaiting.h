#pragma once

#include "platform/interfaces/Waiting.h"

namespace kqu::platform {

/// The machine's monotonic clock, and sleeping in poll.
class SystemWaiting final : public Waiting {
  public:
    [[nodiscard]] Moment Now() override;
    /// A moment that has passed already is a look without sleeping. A signal ends the sleep.
    void Wait(std::span<pollfd> watched, std::optional<Moment> until) override;
};

} // namespace kqu::platform

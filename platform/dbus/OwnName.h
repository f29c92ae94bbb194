#pragma once

#include "platform/interfaces/EventSource.h"

#include <chrono>
#include <optional>

namespace kqu::platform {

class PostedSignals;

/// The program's name on the session bus, by which it is started and found. Who sees that the name
/// has an owner may post on either bus at once: it is asked for when the session bus has taken the
/// subscription and the system bus has been dealt with as well, or has let us wait for too long,
/// because whoever starts the program by its name waits for it.
///
/// That is all that it means. Whether the name is given, to whom else it belongs and when it
/// changes hands is of no interest here; a second copy queues for it and takes over when the first
/// one goes. It is asked for anew on each new connection.
class OwnName final : public EventSource {
  public:
    /// Both must outlive this object, and be collected from before it.
    OwnName(PostedSignals& session, const PostedSignals& system)
        : session_(session), system_(system) {}

    [[nodiscard]] pollfd Watch() const override { return {-1, 0, 0}; }
    /// A moment only while nothing but the system bus is waited for.
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

    static constexpr const char* name = "com.brackwater.KQU_Messenger";
    /// How long the system bus may take once the session bus is ready.
    static constexpr std::chrono::seconds patience{2};

  private:
    PostedSignals& session_;
    const PostedSignals& system_;
};

} // namespace kqu::platform

#pragma once

#include "platform/CDeleter.h"
#include "platform/interfaces/EventSource.h"

#include <functional>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace kqu::testing_support {

/// A login manager on a private bus, as far as locks and announcements go. A source, so that it
/// lives in the same loop as the one who uses it.
class FakeLoginManager final : public platform::EventSource {
  public:
    /// Answers at once, or keeps what it was asked until Answer.
    enum class Manners { Prompt, Hung };

    explicit FakeLoginManager(const std::string& busAddress);
    ~FakeLoginManager() override;
    FakeLoginManager(const FakeLoginManager&) = delete;
    FakeLoginManager& operator=(const FakeLoginManager&) = delete;

    /// The locks that are held now: "mode what who why".
    [[nodiscard]] std::vector<std::string> Locks();
    /// Answers what was left open, as a prompt one.
    void Answer();
    /// "PrepareForSleep" or "PrepareForShutdown".
    void Announce(const std::string& signal, bool begins);
    /// The newer form, with the kind of the shutdown.
    void AnnounceKind(bool begins, const std::string& kind);

    [[nodiscard]] pollfd Watch() const override;
    bool Collect(platform::EventQueue& queue) override;

    Manners manners = Manners::Prompt;
    /// What was scheduled, "reboot"; without one the property does not exist.
    std::string scheduledKind;
    /// How often a lock was asked for.
    int requests = 0;

  private:
    using Message = platform::CPointer<sd_bus_message, sd_bus_message_unref>;
    struct Lock {
        std::string description;
        /// The end of a pipe whose other end is the lock.
        int watched = -1;
    };

    static int OnInhibit(sd_bus_message* call, void* self, sd_bus_error* error);
    static int OnGet(sd_bus_message* call, void* self, sd_bus_error* error);
    void Grant(sd_bus_message* call);

    platform::CPointer<sd_bus, sd_bus_flush_close_unref> bus_;
    std::vector<Lock> locks_;
    std::vector<Message> open_;
};

} // namespace kqu::testing_support

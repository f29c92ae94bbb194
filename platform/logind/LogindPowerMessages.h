#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/PowerMessages.h"
#include "platform/logind/LoginManager.h"
#include "platform/logind/QuestionTimes.h"
#include "platform/logind/SleepGuard.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace kqu::platform {

/// The system's power messages by way of systemd's login manager.
///
/// The manager can't be answered after it asks, so the listener is asked ahead of time: while its
/// answer to "may the system sleep?" is an objection a lock blocks sleep and shutdown, and
/// announcements are delivered under a lock that delays them until they have been heard. Connects
/// to the system bus when somebody begins to listen. Without a bus or a manager there are no
/// messages.
class LogindPowerMessages final : public PowerMessages,
                                  public EventSource,
                                  private LoginManager::Client {
  public:
    static constexpr std::chrono::milliseconds retryPeriod{3000};
    /// How long an announcement waits for the manager to say what kind of shutdown it is.
    static constexpr std::chrono::milliseconds kindPatience{500};

    explicit LogindPowerMessages(std::chrono::milliseconds retryAfter = retryPeriod);

    [[nodiscard]] Registration Listen(Listener listener, Reason reason) override;
    void AnswerMayHaveChanged() override { times_.Changed(); }

    [[nodiscard]] pollfd Watch() const override;
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

  private:
    struct Audience {
        Listener listener;
        Reason reason;
    };

    void ManagerCame() override;
    void ManagerLeft() override;
    void LockGranted(std::uint64_t request, InhibitorLock lock) override;
    void LockRefused(std::uint64_t request) override;
    void Prepares(Announcement announcement, bool begins, const std::optional<std::string>& kind,
                  EventQueue& queue) override;
    void ScheduledKind(const std::optional<std::string>& kind, EventQueue& queue) override;

    void Ask();
    void Announce(std::uint32_t message, EventQueue& queue);
    void AnnounceShutdown(const std::optional<std::string>& kind, EventQueue& queue);
    void Resume(Announcement announcement, EventQueue& queue);
    bool Tell(std::uint32_t message) const;

    LoginManager manager_;
    SleepGuard guard_{manager_};
    QuestionTimes times_;
    std::shared_ptr<Audience> audience_;
    bool isManagerThere_ = false;
    bool isQuestionPosted_ = false;
    /// Set while a shutdown is under way and has been announced.
    bool isShutdownAnnounced_ = false;
    /// Set while a shutdown is to be announced as soon as its kind is known.
    std::optional<Moment> kindDeadline_;
};

} // namespace kqu::platform

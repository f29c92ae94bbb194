#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/PowerMessages.h"
#include "platform/power_messages/LoginManager.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace kqu::platform {

/// The system's power messages.
///
/// No service can be answered after it asks, so the listener is asked ahead of time: while its
/// answer to "may the system sleep?" is an objection, the machine is kept awake by the login
/// manager and by the services of the session, each of which may be absent. The login manager's
/// announcements are delivered as they come; nothing hangs on the answers. Connects to the buses
/// when somebody begins to listen.
class SystemPowerMessages final : public PowerMessages, private EventSource {
  public:
    /// Between two questions while something runs, since the power source changes unnoticed. Below
    /// a second, so that with the way to the services nothing outlives its reason by more.
    static constexpr std::chrono::milliseconds questionPeriod{750};
    static_assert(questionPeriod < std::chrono::seconds(1));
    /// Between two questions at least: changes come in floods.
    static constexpr std::chrono::milliseconds leastGap{200};

    explicit SystemPowerMessages(std::chrono::milliseconds retryAfter = std::chrono::seconds(3));

    [[nodiscard]] Registration Listen(Listener listener, Reason reason) override;
    void AnswerMayHaveChanged() override { hasChanged_ = true; }

    /// One for each bus and one for the questions. They are valid as long as this object is.
    [[nodiscard]] std::vector<EventSource*> Sources();

  private:
    struct Audience {
        Listener listener;
        Reason reason;
    };

    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

    void Ask();
    bool Deliver(std::uint32_t message) const;
    void Forgo();

    LoginManager loginManager_;
    InhibitingServices sessionServices_;
    std::shared_ptr<Audience> audience_;

    Moment asked_;
    bool hasChanged_ = false;
    bool somethingRuns_ = false;
    bool isQuestionPosted_ = false;
};

} // namespace kqu::platform

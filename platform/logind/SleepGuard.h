#pragma once

#include "platform/logind/LockKeeper.h"

#include <optional>
#include <string>

namespace kqu::platform {

/// Carries out the answers to the system's power messages with the locks of a login manager, which
/// asks nobody: while the answer is an objection it holds a lock that blocks, and always one that
/// delays, to be let go as the acknowledgement of an announcement. Works on moments that it is
/// told, and sends its requests to the office alone.
class SleepGuard {
  public:
    explicit SleepGuard(LockOffice& office);

    /// There is a manager, and somebody who answers.
    void Begin(Moment now);
    /// One of the two has gone, and with it all locks.
    void End();
    [[nodiscard]] bool IsOnDuty() const { return isOnDuty_; }

    /// The answer to the question whether the system may sleep, and what it is that runs.
    void Answered(bool objects, const std::string& why, Moment now);

    /// The system is about to sleep or to shut down: the manager grants no locks until that is
    /// over.
    void PreparationBegan();
    /// The announcement has been heard by all who are to hear it.
    void Acknowledge();
    void PreparationEnded(Moment now);

    void Granted(std::uint64_t request, InhibitorLock lock);
    void Refused(std::uint64_t request);

    /// Asks again for what was refused a while ago.
    void Look(Moment now);
    [[nodiscard]] std::optional<Moment> Due() const;

  private:
    LockKeeper block_;
    LockKeeper delay_;
    bool isOnDuty_ = false;
    bool isPreparing_ = false;
};

} // namespace kqu::platform

#pragma once

#include "platform/interfaces/Waiting.h"
#include "platform/logind/InhibitorLock.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kqu::platform {

/// What a lock of the login manager does to sleep and shutdown: holds it off, or holds it up for a
/// moment so that its holder hears of it in time.
enum class LockMode { Block, Delay };

/// Where locks are asked for. The answer to a request comes later, or never.
class LockOffice {
  public:
    virtual ~LockOffice() = default;
    /// The serial number of the request, never the same; 0 if it could not be made.
    [[nodiscard]] virtual std::uint64_t Request(LockMode mode, const std::string& why) = 0;
};

/// Keeps one lock while it is wanted. There is at most one request under way; a lock that comes
/// when it is no longer wanted is dropped at once.
class LockKeeper {
  public:
    /// How long to leave the office alone after it refused, and how often at most a lock is taken
    /// anew because it is held for another reason by now.
    static constexpr std::chrono::seconds patience{5};

    LockKeeper(LockOffice& office, LockMode mode) : office_(office), mode_(mode) {}

    /// The lock is wanted for that reason: asks for it if it is not held. One that is held for
    /// another reason stays until its successor is there.
    void Want(const std::string& why, Moment now);
    /// Drops the lock and forgets the request.
    void Forgo();

    /// The answer to a request: whether it was one of this keeper's current ones.
    bool Granted(std::uint64_t request, InhibitorLock& lock);
    bool Refused(std::uint64_t request);

    /// When Want may ask for something that it has left open for now.
    [[nodiscard]] std::optional<Moment> Due() const;
    [[nodiscard]] bool IsHeld() const { return lock_.IsHeld(); }

  private:
    LockOffice& office_;
    LockMode mode_;
    InhibitorLock lock_;
    std::string heldFor_;
    std::uint64_t request_ = 0;
    std::string askedFor_;
    bool isWanted_ = false;
    Moment notBefore_;
};

} // namespace kqu::platform

#pragma once

#include <utility>

namespace kqu::platform {

/// A lock of the login manager, held for as long as this object lives: its descriptor is the lock,
/// so no copy of it may ever get into another process.
class InhibitorLock {
  public:
    InhibitorLock() = default;
    /// The lock behind a descriptor that stays with its owner; a copy of it is held, which no child
    /// process inherits. Holds nothing if the copy can't be made.
    [[nodiscard]] static InhibitorLock CopyOf(int descriptor);

    InhibitorLock(InhibitorLock&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    InhibitorLock& operator=(InhibitorLock&& other) noexcept;
    InhibitorLock(const InhibitorLock&) = delete;
    InhibitorLock& operator=(const InhibitorLock&) = delete;
    ~InhibitorLock() { Drop(); }

    void Drop();
    [[nodiscard]] bool IsHeld() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

} // namespace kqu::platform

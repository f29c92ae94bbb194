#pragma once

#include "platform/interfaces/Registration.h"

#include <cstdint>
#include <functional>
#include <string>

namespace kqu::platform {

// The system's power messages: questions, announcements, and one that reports the resume.
inline constexpr std::uint32_t canSystemPowerOff = 0xE0000240;
inline constexpr std::uint32_t systemWillPowerOff = 0xE0000250;
inline constexpr std::uint32_t canSystemSleep = 0xE0000270;
inline constexpr std::uint32_t systemWillSleep = 0xE0000280;
inline constexpr std::uint32_t systemHasPoweredOn = 0xE0000300;
inline constexpr std::uint32_t systemWillRestart = 0xE0000310;

/// The system's power messages and their answers.
class PowerMessages {
  public:
    /// Returns whether the listener objects to the message.
    using Listener = std::function<bool(std::int32_t message)>;
    /// Names what runs, for people who wonder what keeps the machine awake; empty while nothing
    /// does, and then the listener has nothing to object to.
    using Reason = std::function<std::string()>;

    virtual ~PowerMessages() = default;

    /// Each power message is delivered to `listener` from the event loop and its answer acted on;
    /// never from within this call. One listens at a time: the latest one to come.
    [[nodiscard]] virtual Registration Listen(Listener listener, Reason reason) = 0;

    /// Something that the answer may depend on has changed: the listener is asked again soon.
    virtual void AnswerMayHaveChanged() = 0;
};

} // namespace kqu::platform

#pragma once

#include "framework/Runtime.h"
#include "framework/values/Object.h"
#include "platform/interfaces/Registration.h"

#include <cstdint>
#include <string>

namespace kqu {

/// A listener to the system's power messages, registered from its making to its end. Messages are
/// delivered from the event loop, never while it is being made.
class SleepNotification : public Object {
  public:
    SleepNotification()
        : listening_(Runtime::Current().Machine().power.Listen(
              [this](std::int32_t message) { return Event_Sleep(message); },
              [this] { return WhatRuns(); })) {}

    /// Something that the answer may depend on has changed: the listener is asked again soon.
    static void AnswerMayHaveChanged() {
        Runtime::Current().Machine().power.AnswerMayHaveChanged();
    }

    bool running = true;

    /// Returns whether the listener objects to a power message.
    virtual bool Event_Sleep(std::int32_t message) = 0;

    /// Names what runs, to be read by people; empty while nothing does.
    virtual std::string WhatRuns() = 0;

  private:
    platform::Registration listening_;
};

} // namespace kqu

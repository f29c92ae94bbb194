#include "framework/events/SleepNotification.h"

#include "framework/Runtime.h"

namespace kqu {

SleepNotification::SleepNotification()
    : listening_(Runtime::Current().Power().Listen(
          [this](std::int32_t message) { return Event_Sleep(message); },
          [this] { return WhatRuns(); })) {}

void SleepNotification::AnswerMayHaveChanged() {
    Runtime::Current().Power().AnswerMayHaveChanged();
}

} // namespace kqu

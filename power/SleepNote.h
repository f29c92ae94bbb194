#pragma once

#include "framework/events/SleepNotification.h"

#include <cstdint>
#include <string>

namespace kqu {

/// The listener to the system's power messages. Its one action is its answer: while tasks run it
/// objects, under the suite's power preferences.
class SleepNote : public SleepNotification {
  public:
    /// True if the program objects to the sleep, restart or power-off that `message` is about.
    bool Event_Sleep(std::int32_t message) override;

    /// The jobs of the rows, for the list of what keeps the machine awake.
    std::string WhatRuns() override;
};

} // namespace kqu

#pragma once

#include "framework/values/MemoryBlock.h"
#include "framework/values/Object.h"

#include <cstdint>
#include <string>

namespace kqu {

class SleepNote;

/// The module of the few globals of the program and of the services that belong to no class.
class Module1Globals {
  public:
    // Set by the version gate at the start.
    bool TenThreeOrLater = false;
    bool TenFourOrLater = false;
    bool TenFiveOrLater = false;
    bool TenSixOrLater = false;
    /// Whether the machine has a battery at all; found out at the start, read by nothing.
    bool isNoteBook = false;
    /// Keeps the listener to the system's power messages alive.
    Ref<SleepNote> MySleepNote;
    /// Whether the panel belongs to the sibling product: its titles and pictures then.
    bool ParentIsMarlstone = false;
    // The suite's power preferences.
    bool PreventScheduleOnBatt = true;
    bool SleepOnBatt = true;
    bool SleepOnAC = false;

    /// Runs a command in the shell and returns all that it printed, the bytes as they are. With
    /// `linefeedsToReturns` every line feed becomes a return. Pumps the event loop while it reads,
    /// so that the caller must expect the task table to have changed. An error of the command is
    /// not noticed. Raises FunctionNotFoundException.
    std::string GetShell(const std::string& command, bool linefeedsToReturns);

    /// Reads the three power switches from the suite's preference file; runs no shell command, in
    /// spite of its name. Raises IllegalCastException for a top level or a switch of a wrong kind.
    void GetMainAppPrefsWithShell();

    /// Whether the machine runs on anything but AC at this moment; false if that is unknown.
    bool BatteryPower();

    /// Whether the power state that the system prints speaks of a battery.
    bool CheckNoteBook();
};

/// The one instance, initialised anew for each life of the program.
extern Module1Globals Module1;

} // namespace kqu

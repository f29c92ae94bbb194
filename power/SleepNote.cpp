#include "power/SleepNote.h"

#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "globals/Module1.h"
#include "panel/TaskCode.h"
#include "panel/Window1.h"

#include <algorithm>
#include <array>

namespace kqu {

namespace {
/// Questions and announcements are treated alike; any other message is never refused.
bool IsRefusable(std::int32_t message) {
    using namespace platform;
    constexpr std::array refusable{canSystemPowerOff, systemWillPowerOff, canSystemSleep,
                                   systemWillSleep, systemWillRestart};
    return std::find(refusable.begin(), refusable.end(), static_cast<std::uint32_t>(message)) !=
           refusable.end();
}

/// How many jobs are named; the others are counted.
constexpr int namedJobs = 3;

/// A row's job in a few words: "Scanning Data".
std::string JobOf(const Dictionary& row) {
    std::string job = "Running";
    switch (row.HasKey("task") ? static_cast<TaskCode>(row.Value("task").Int32Value())
                               : TaskCode()) {
    case TaskCode::Scanner:
        job = "Scanning";
        break;
    case TaskCode::Defragmenter:
        job = "Defragmenting";
        break;
    case TaskCode::Backup:
        job = "Backing up";
        break;
    }
    return job + " " + (row.HasKey("volume") ? row.Value("volume").StringValue() : "a disk");
}
} // namespace

bool SleepNote::Event_Sleep(std::int32_t message) {
    const Ref<Dictionary>& table = Window1::Instance().MyWindowEventList->MyDict;
    if (!table || table->Count() <= 0)
        return false;
    // Each question to the power source is asked afresh; it may change in between.
    if (Module1.PreventScheduleOnBatt && Module1.BatteryPower())
        return false;
    if (Module1.BatteryPower() && !Module1.SleepOnBatt)
        return IsRefusable(message);
    // SleepOnAC counts on battery as well: there both switches must allow sleep. This is meant.
    if (!Module1.SleepOnAC)
        return IsRefusable(message);
    return false;
}

std::string SleepNote::WhatRuns() {
    const Ref<Dictionary>& table = Window1::Instance().MyWindowEventList->MyDict;
    std::string jobs;
    const int count = table ? table->Count() : 0;
    for (int index = 0; index < std::min(count, namedJobs); ++index) {
        const Ref<Dictionary> row = table->Value(table->Key(index)).ObjectAs<Dictionary>();
        jobs += (index == 0 ? "" : ", ") + JobOf(*Required(row));
    }
    return count > namedJobs ? jobs + " and " + Str(count - namedJobs) + " more" : jobs;
}

} // namespace kqu

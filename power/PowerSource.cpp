#include "framework/FunctionLookup.h"
#include "framework/values/MemoryBlock.h"
#include "framework/values/Text.h"
#include "globals/Module1.h"

#include <memory>

namespace kqu {

namespace {
constexpr std::int32_t nameBufferSize = 100;
constexpr std::uint32_t utf8Encoding = 0x08000100;

/// Whether a power source of that name is anything but mains. Decided by the absence of "AC", so
/// that an unreadable name and a source of any other kind count as battery.
bool IsOtherThanAC(functions::StringHandle source) {
    const auto buffer = std::make_shared<MemoryBlock>(nameBufferSize);
    // The success flag is not looked at: after a failure the buffer is empty.
    Lookup<functions::CFStringGetCString>()(source, buffer->CharData(), nameBufferSize,
                                            utf8Encoding);
    // The name is not ours by the conventions of the function that gave it. It is released all the
    // same, on purpose, and the platform bears that.
    Lookup<functions::CFRelease>()(source);
    return !Contains(buffer->CString(0), "AC");
}
} // namespace

bool Module1Globals::BatteryPower() {
    if (!IsFunctionAvailable<functions::IOPSCopyPowerSourcesInfo>())
        return false;
    const functions::BlobHandle blob = Lookup<functions::IOPSCopyPowerSourcesInfo>()();
    if (blob == 0)
        return false;
    const functions::StringHandle source =
        Lookup<functions::IOPSGetProvidingPowerSourceType>()(blob);
    const bool onBattery = source != 0 && IsOtherThanAC(source);
    Lookup<functions::CFRelease>()(blob);
    return onBattery;
}

bool Module1Globals::CheckNoteBook() {
    return Contains(GetShell("pmset -g", true), "Battery Power");
}

} // namespace kqu

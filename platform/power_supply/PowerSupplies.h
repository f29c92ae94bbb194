#pragma once

#include <filesystem>
#include <string_view>

namespace kqu::platform {

/// What provides power now: "AC Power", "UPS Power" or "Battery Power". Read afresh at each call
/// from what the kernel reports of the machine's power supplies, below /sys/class/power_supply of
/// the tree of files at `root`.
///
/// It is AC while a charger of any kind is online, unless its port gives power away. Else a UPS
/// that has lost its mains or is discharging, else a battery that is discharging, is what the
/// machine runs on. A UPS or a battery that doesn't say counts as discharging. Supplies of a device
/// (a mouse) and those that are not plugged in do not count. Where nothing speaks for a battery it
/// is AC.
[[nodiscard]] std::string_view ProvidingPowerSource(const std::filesystem::path& root = "/");

} // namespace kqu::platform

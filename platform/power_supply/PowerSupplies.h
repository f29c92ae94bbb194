#pragma once

#include <filesystem>
#include <string_view>

namespace kqu::platform {

/// The machine's power supplies as the kernel tells of them, below /sys/class/power_supply.
class PowerSupplies {
  public:
    explicit PowerSupplies(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// What provides power now: "AC Power", "UPS Power" or "Battery Power". Read afresh at each
    /// call.
    ///
    /// Decided as systemd decides whether it is on AC power, with a place for a UPS: a mains or USB
    /// supply that is online is AC, unless its port gives power away; else a UPS, else a battery
    /// that is discharging, or does not say what it does, is what the machine runs on. Supplies of
    /// a device (a mouse) and those that are not plugged in do not count. Where nothing speaks for
    /// a battery it is AC.
    [[nodiscard]] std::string_view ProvidingSource() const;

  private:
    std::filesystem::path root_;
};

} // namespace kqu::platform

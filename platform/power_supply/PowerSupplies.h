#pragma once

#include <filesystem>
#include <string_view>

namespace kqu::platform {

/// The machine's power supplies as the kernel reports them, below /sys/class/power_supply.
class PowerSupplies {
  public:
    explicit PowerSupplies(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// What provides power now: "AC Power", "UPS Power" or "Battery Power". Read afresh at each
    /// call.
    ///
    /// It is AC while a charger of any kind is online, unless its port gives power away. Else a UPS
    /// that has lost its mains or is discharging, else a battery that is discharging, is what the
    /// machine runs on. A UPS or a battery that doesn't say counts as discharging. Supplies of a
    /// device (a mouse) and those that are not plugged in do not count. Where nothing speaks for a
    /// battery it is AC.
    [[nodiscard]] std::string_view ProvidingSource() const;

  private:
    std::filesystem::path root_;
};

} // namespace kqu::platform

#include "platform/power_supply/PowerSupplies.h"

#include "platform/files/SmallFiles.h"

#include <string>

namespace kqu::platform {

namespace {
namespace fs = std::filesystem;

constexpr std::string_view mains = "AC Power";
constexpr std::string_view uninterruptible = "UPS Power";
constexpr std::string_view battery = "Battery Power";

/// What a single supply says of the machine's power.
enum class Voice { Nothing, IsOnMains, IsOnUps, IsOnBattery };

/// Whether the USB ports that a supply stands for take power in. A port says its roles with the one
/// that it has now in brackets; ports that say nothing are believed to take.
bool IsPowerSink(const fs::path& supply) {
    bool gives = false;
    for (const fs::path& port : EntriesOf(supply / "device" / "typec")) {
        const std::string role = ValueOfFile(port / "power_role").value_or("");
        if (role.find("[sink]") != std::string::npos)
            return true;
        gives = gives || role.find("[source]") != std::string::npos;
    }
    return !gives;
}

bool IsOnline(const fs::path& supply) {
    // Above 1 where a supply can be set to other voltages.
    const std::string online = ValueOfFile(supply / "online").value_or("0");
    return !online.empty() && online != "0";
}

/// A UPS that reports neither its input nor its state counts as in use.
bool IsUpsInUse(const fs::path& supply) {
    const auto online = ValueOfFile(supply / "online");
    const auto status = ValueOfFile(supply / "status");
    return online == "0" || status == "Discharging" || (!online && !status);
}

Voice Ask(const fs::path& supply) {
    if (ValueOfFile(supply / "scope") == "Device" || ValueOfFile(supply / "present") == "0")
        return Voice::Nothing;
    const auto type = ValueOfFile(supply / "type");
    if (type == "UPS")
        return IsUpsInUse(supply) ? Voice::IsOnUps : Voice::Nothing;
    if (type == "Battery")
        return ValueOfFile(supply / "status").value_or("Discharging") == "Discharging"
                   ? Voice::IsOnBattery
                   : Voice::Nothing;
    // Chargers of every other kind: mains, USB, wireless, and those to come.
    return IsOnline(supply) && IsPowerSink(supply) ? Voice::IsOnMains : Voice::Nothing;
}
} // namespace

std::string_view ProvidingPowerSource(const fs::path& root) {
    bool hasUps = false;
    bool hasBattery = false;
    for (const fs::path& supply : EntriesOf(root / "sys/class/power_supply")) {
        const Voice voice = Ask(supply);
        if (voice == Voice::IsOnMains)
            return mains;
        hasUps = hasUps || voice == Voice::IsOnUps;
        hasBattery = hasBattery || voice == Voice::IsOnBattery;
    }
    if (hasUps)
        return uninterruptible;
    return hasBattery ? battery : mains;
}

} // namespace kqu::platform

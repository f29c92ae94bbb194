#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"
#include "platform/power_supply/PowerSupplies.h"

#include <string>

namespace kqu::platform {

void RegisterPowerSupplyFunctions(FunctionTable& table, Handles& handles) {
    // The blob is the name of the source itself; nobody looks into it but the second function.
    table.Set<functions::IOPSCopyPowerSourcesInfo>(
        [&handles] { return handles.AddText(std::string(ProvidingPowerSource())); });
    table.Set<functions::IOPSGetProvidingPowerSourceType>([&handles](functions::BlobHandle blob) {
        const std::string* source = handles.Text(blob);
        return source == nullptr ? 0 : handles.AddText(*source);
    });
}

} // namespace kqu::platform

#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <string>
#include <utility>

namespace kqu::platform {

void RegisterPowerSupplyFunctions(FunctionTable& table, Handles& handles, PowerSupplies supplies) {
    // The blob is the name of the source itself; nobody looks into it but the second function.
    table.Set<functions::IOPSCopyPowerSourcesInfo>([&handles, supplies = std::move(supplies)] {
        return handles.AddBlob(std::string(supplies.ProvidingSource()));
    });
    table.Set<functions::IOPSGetProvidingPowerSourceType>([&handles](functions::BlobHandle blob) {
        const std::string* source = handles.Blob(blob);
        return source == nullptr ? 0 : handles.UnownedText(*source);
    });
}

} // namespace kqu::platform

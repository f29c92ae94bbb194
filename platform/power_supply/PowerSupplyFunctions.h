#pragma once

#include "platform/functions/FunctionTable.h"
#include "platform/functions/Handles.h"
#include "platform/power_supply/PowerSupplies.h"

namespace kqu::platform {

/// Enters `IOPSCopyPowerSourcesInfo`, which takes down the state of the power supplies and has to
/// be released, and `IOPSGetProvidingPowerSourceType`, which names the source by such a blob: an
/// unowned text, or 0 for something that is no blob. `handles` must outlive the table.
void RegisterPowerSupplyFunctions(FunctionTable& table, Handles& handles,
                                  PowerSupplies supplies = PowerSupplies());

} // namespace kqu::platform

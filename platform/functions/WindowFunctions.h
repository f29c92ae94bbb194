#pragma once

#include "platform/functions/FunctionTable.h"

namespace kqu::platform {

/// Enters the functions on one window: alpha, attributes, collapsed state and tile, size, drag.
/// They go to the native window that they are called with; without one, the status says so.
void RegisterWindowFunctions(FunctionTable& table);

} // namespace kqu::platform

#pragma once

#include "platform/functions/FunctionTable.h"
#include "platform/functions/Handles.h"

namespace kqu::platform {

/// Enters `CFStringGetCString`, under both libraries that it is asked for in, and `CFRelease`.
///
/// A conversion succeeds if the handle stands for a text, the encoding is UTF-8 and the buffer
/// takes all its bytes with a NUL behind them; a failed one leaves an empty string in the buffer.
/// `handles` must outlive the table.
void RegisterCoreFoundationFunctions(FunctionTable& table, Handles& handles);

} // namespace kqu::platform

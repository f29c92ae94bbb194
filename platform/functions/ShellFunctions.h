#pragma once

#include "platform/functions/FunctionTable.h"
#include "platform/functions/Handles.h"

namespace kqu::platform {

/// Enters `popen`, `feof`, `fread`, `ferror` and `pclose`: the C library's own, on handles. A
/// handle that stands for no stream, such as that of a command that could not be started, reads as
/// a stream at its end and in error. A stream that nobody closes is closed with the handles.
/// `handles` must outlive the table.
void RegisterShellFunctions(FunctionTable& table, Handles& handles);

} // namespace kqu::platform

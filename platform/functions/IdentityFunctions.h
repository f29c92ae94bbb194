#pragma once

#include "platform/functions/FunctionTable.h"

namespace kqu::platform {

/// Enters `lstat`, `seteuid`, `setuid`, `getuid` and `Gestalt`.
///
/// `lstat` writes the owner's id at byte offset 12 of the record and nothing else; on failure, or
/// if the record is too small for that, it returns -1 and writes nothing. Where "/dev/console"
/// belongs to root, the active user of seat0 stands for its owner, as logind names that user.
///
/// `seteuid` and `setuid` have the meaning that they have on BSD systems. In particular, after
/// `seteuid(u)` a process that came from root gives everything up with `setuid(u)`: see
/// platform/functions/Identity.h.
///
/// `Gestalt` knows the system's version, "sysv", and nothing else.
void RegisterIdentityFunctions(FunctionTable& table);

} // namespace kqu::platform

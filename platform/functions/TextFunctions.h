#pragma once

#include "platform/functions/FunctionTable.h"

namespace kqu::platform {

/// Enters `TruncateThemeText`. The theme's one font is the default face at 13 pixels; font ids and
/// draw states make no difference. The status is always 0.
void RegisterTextFunctions(FunctionTable& table);

} // namespace kqu::platform

#include "platform/functions/ScreenUpdates.h"

#include "platform/functions/Functions.h"

namespace kqu::platform {

void RegisterScreenUpdates(FunctionTable& table, ScreenUpdates& updates) {
    table.Set<functions::DisableScreenUpdates>([&updates] {
        updates.Disable();
        return 0;
    });
    table.Set<functions::EnableScreenUpdates>([&updates] {
        updates.Enable();
        return 0;
    });
}

} // namespace kqu::platform

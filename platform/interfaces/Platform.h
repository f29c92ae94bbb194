#pragma once

#include "platform/interfaces/DistributedNotifications.h"
#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/FunctionTable.h"
#include "platform/interfaces/NativeWindow.h"
#include "platform/interfaces/PowerMessages.h"
#include "platform/interfaces/Waiting.h"

#include <vector>

namespace kqu::platform {

/// All that the framework knows of the world: five interfaces and the sources to watch. Everything
/// named here outlives the runtime that is given it.
struct Platform {
    Waiting& waiting;
    WindowSystem& windows;
    DistributedNotifications& notifications;
    PowerMessages& power;
    FunctionTable& functions;
    ScreenUpdates& screenUpdates;
    std::vector<EventSource*> sources;
};

} // namespace kqu::platform

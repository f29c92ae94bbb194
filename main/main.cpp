#include "framework/Runtime.h"
#include "platform/dbus/DBusNotifications.h"
#include "platform/functions/LinuxFunctions.h"
#include "platform/loop/SignalSource.h"
#include "platform/loop/SystemWaiting.h"
#include "platform/power_messages/SystemPowerMessages.h"
#include "platform/x11/X11WindowSystem.h"
#include "shell/App.h"

#include <cstdio>
#include <fcntl.h>
#include <malloc.h>
#include <memory>
#include <unistd.h>
#include <vector>

// The program: the real platform, the framework's runtime on top of it, and the application object.

namespace kqu {
namespace {

constexpr int noDisplay = 1;

/// A starter may leave out the standard streams. What is opened in their place would become those
/// of the commands that the program starts.
void FillStandardDescriptors() {
    int descriptor = STDIN_FILENO;
    while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO)
        close(descriptor);
}

int RunOn(platform::X11WindowSystem& windows, platform::SignalSource& signals) {
    platform::SystemWaiting waiting;
    platform::DBusNotifications notifications;
    platform::SystemPowerMessages power;
    platform::ScreenUpdates screenUpdates;
    platform::Handles handles;
    platform::FunctionTable functions;
    platform::RegisterShellFunctions(functions, handles);
    platform::RegisterIdentityFunctions(functions);
    platform::RegisterCoreFoundationFunctions(functions, handles);
    platform::RegisterVolumeFunctions(functions, handles);
    platform::RegisterPowerSupplyFunctions(functions, handles);
    platform::RegisterWindowFunctions(functions, screenUpdates);
    platform::RegisterTextFunctions(functions);

    std::vector<platform::EventSource*> sources = notifications.Sources();
    for (platform::EventSource* source : power.Sources())
        sources.push_back(source);
    sources.insert(sources.end(), {&windows, &signals});
    Runtime runtime({waiting, windows, notifications, power, functions, screenUpdates, sources});
    App app;
    return app.Run();
}

std::unique_ptr<platform::X11WindowSystem> OpenDisplay() {
    // A server that hangs says nothing, for as long as it likes.
    const platform::EndingAtOnce whenAsked;
    return platform::X11WindowSystem::Open();
}

int Run() {
    // To be asked to terminate is to have the panel closed. From the first moment to the last: what
    // comes while the program opens or ends must not kill it.
    static platform::SignalSource signals([] { Application::Current().Close(); });
    const auto windows = OpenDisplay();
    if (!windows) {
        std::fputs("kqu-messenger: no X display can be opened\n", stderr);
        return noDisplay;
    }
    return RunOn(*windows, signals);
}

} // namespace
} // namespace kqu

int main() {
    kqu::FillStandardDescriptors();
    // The fonts are set up on threads that soon end; heaps of their own would stay, half used.
    mallopt(M_ARENA_MAX, 1);
    // A large message goes back to the system when it is freed. Without a fixed threshold the first
    // one raises it, and those after it stay on the heap.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    try {
        return kqu::Run();
    } catch (...) {
        // Without descriptors or memory there is no program; it ends as it always does.
        return 0;
    }
}

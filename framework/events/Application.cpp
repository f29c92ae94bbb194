#include "framework/events/Application.h"

#include "framework/ui/Window.h"

#include <cassert>
#include <utility>

namespace kqu {

namespace {
Application* current = nullptr;
} // namespace

Application::Application() {
    assert(current == nullptr);
    current = this;
    Runtime::Current().Loop().SetExceptionHandler(
        [this](const std::exception_ptr&) { Unhandled(); });
    Runtime::Current().Machine().windows.OnDisplayLost([this] { Close(); });
}

Application::~Application() {
    Runtime::Current().Loop().SetExceptionHandler(nullptr);
    Runtime::Current().Machine().windows.OnDisplayLost(nullptr);
    current = nullptr;
}

Application& Application::Current() {
    assert(current != nullptr);
    return *current;
}

int Application::Run() {
    Start();
    try {
        Runtime::Current().Loop().Run();
    } catch (...) {
        // Not out of a handler but out of the loop itself: there is no going on.
        Unhandled();
    }
    return exitStatus_;
}

void Application::Quit(int exitStatus) {
    exitStatus_ = exitStatus;
    Runtime::Current().Loop().Quit();
}

void Application::Close() {
    const auto windows = Runtime::Current().OpenWindows();
    for (Window* window : windows)
        window->Close();
    if (!IsQuitting())
        Quit(0);
}

void Application::Unhandled() {
    if (!Event_UnhandledException())
        Quit(0);
}

} // namespace kqu

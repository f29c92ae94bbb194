#include "framework/events/Application.h"

#include "framework/ui/Window.h"

#include <cassert>
#include <utility>

namespace kqu {

namespace {
Application* current = nullptr;

RuntimeException AsRuntimeException(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const RuntimeException& known) {
        return known;
    } catch (...) {
        return RuntimeException("an exception that isn't the framework's");
    }
}
} // namespace

Application::Application() {
    assert(current == nullptr);
    current = this;
    Runtime::Current().Loop().SetExceptionHandler(
        [this](const std::exception_ptr& error) { Unhandled(error); });
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
        Unhandled(std::current_exception());
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

void Application::Unhandled(const std::exception_ptr& error) {
    if (!Event_UnhandledException(AsRuntimeException(error)))
        Quit(0);
}

} // namespace kqu

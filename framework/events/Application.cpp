#include "framework/events/Application.h"

#include "framework/Runtime.h"
#include "framework/ui/Window.h"

#include <cassert>
#include <utility>

namespace kqu {

namespace {
Application* current = nullptr;

/// An exception of any origin, as one of the framework's.
RuntimeException AsRuntimeException(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const RuntimeException& known) {
        return known;
    } catch (const std::exception& other) {
        return RuntimeException(other.what());
    } catch (...) {
        return RuntimeException("an exception of an unknown type");
    }
}
} // namespace

Application::Application() {
    assert(current == nullptr);
    current = this;
    Runtime::Current().Loop().SetExceptionHandler(
        [this](const std::exception_ptr& error) { Unhandled(error); });
    Runtime::Current().Windows().OnDisplayLost([this] { Close(); });
}

Application::~Application() {
    Runtime::Current().Loop().SetExceptionHandler(nullptr);
    Runtime::Current().Windows().OnDisplayLost(nullptr);
    current = nullptr;
}

Application& Application::Current() {
    assert(current != nullptr);
    return *current;
}

void Application::Start() {
    Runtime::Current().Loop().Post([this] { Event_Open(); });
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

bool Application::IsQuitting() const {
    return Runtime::Current().Loop().IsQuitting();
}

void Application::Close() {
    const auto windows = Runtime::Current().OpenWindows();
    for (Window* window : windows)
        window->Close();
    if (!IsQuitting())
        Quit(0);
}

void Application::DoEvents() {
    Runtime::Current().Loop().DoEvents();
}

bool Application::Event_UnhandledException(const RuntimeException&) {
    return false;
}

void Application::Unhandled(const std::exception_ptr& error) {
    if (!Event_UnhandledException(AsRuntimeException(error)))
        Quit(0);
}

} // namespace kqu

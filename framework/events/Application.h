#pragma once

#include "framework/Runtime.h"
#include "framework/values/Exceptions.h"

#include <exception>

namespace kqu {

/// The single application object: runs the event loop from its opening to its end.
class Application {
  public:
    Application();
    virtual ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// The application that exists now; asking before it was made is an error of the program.
    [[nodiscard]] static Application& Current();

    /// Has the opening event raised from the loop.
    void Start() {
        Runtime::Current().Loop().Post([this] { Event_Open(); });
    }
    /// Starts, then runs the loop until Quit. The exit status.
    int Run();
    [[nodiscard]] int ExitStatus() const { return exitStatus_; }

    /// Ends the program with the given exit status as soon as the running handlers have unwound.
    void Quit(int exitStatus);

    /// Whether Quit was called: nothing more will be dispatched.
    [[nodiscard]] bool IsQuitting() const { return Runtime::Current().Loop().IsQuitting(); }

    /// Raises the close event of every open window, then ends the program if none of them did: what
    /// a lost display and a request to terminate come to.
    void Close();

    /// Dispatches pending events once, without waiting, and returns.
    void DoEvents() { Runtime::Current().Loop().DoEvents(); }

  protected:
    virtual void Event_Open() {}
    /// Called for every exception that no handler caught. Returns whether it is dealt with;
    /// otherwise the program ends.
    virtual bool Event_UnhandledException(const RuntimeException&) { return false; }

  private:
    void Unhandled(const std::exception_ptr& error);

    int exitStatus_ = 0;
};

} // namespace kqu

#pragma once

#include "framework/loop/EventLoop.h"
#include "platform/interfaces/Platform.h"

#include <vector>

namespace kqu {

class Window;

/// The framework's one connection to the world: the platform that it was started with and the event
/// loop on top of it. There is exactly one at a time; the program makes it first and drops it last.
///
/// It is a global on purpose. A process has one display, one user and one loop; the rules make
/// their windows, timers and listeners, and look up functions, at places where there is nothing
/// else to get it from, and passing it would add the same argument to each of them. Only the
/// framework asks for it.
class Runtime {
  public:
    explicit Runtime(platform::Platform platform);
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    /// The runtime that exists now. Asking before it was made is an error of the program.
    [[nodiscard]] static Runtime& Current();

    [[nodiscard]] EventLoop& Loop() { return loop_; }
    [[nodiscard]] const platform::Platform& Machine() const { return platform_; }

    /// The windows that are open now.
    [[nodiscard]] std::vector<Window*>& OpenWindows() { return openWindows_; }

  private:
    platform::Platform platform_;
    EventLoop loop_;
    std::vector<platform::Registration> sources_;
    std::vector<Window*> openWindows_;
};

} // namespace kqu

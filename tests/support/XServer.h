#pragma once

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kqu::x11test {

/// A program that runs for as long as this lives, and no longer than the tests.
class ChildProcess {
  public:
    /// `inherited` is a descriptor that it gets, or -1.
    ChildProcess(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment, int inherited);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

  private:
    pid_t pid_;
};

/// A private X server on a display number that was free, with a window manager if one is wanted.
/// While it lives, it is the display that the environment names.
class XServer {
  public:
    /// Raises std::runtime_error if there is no Xvfb.
    explicit XServer(const std::string& screen = "1024x768x24");
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// Returns when the manager manages; a former one has gone by then. An empty name is none.
    void StartManager(const std::string& program);
    /// The server dies without a word.
    void Kill() { server_.reset(); }

  private:
    std::string home_;
    std::string display_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> manager_;
};

} // namespace kqu::x11test

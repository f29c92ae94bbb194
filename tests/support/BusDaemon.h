#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace kqu::testing_support {

/// A private message bus, in a folder of its own, to which any user may connect and broadcast.
class BusDaemon {
  public:
    /// Starts the daemon and waits until it listens. Raises std::runtime_error if there is none.
    BusDaemon();
    ~BusDaemon();
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;

    [[nodiscard]] const std::string& Address() const { return address_; }
    /// Ends the daemon, and starts another one at the same address.
    void Stop();
    void Start();

  private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t daemon_ = -1;
};

/// Runs a command line of the shell and waits for it. Its exit status.
int RunCommand(const std::string& command);

} // namespace kqu::testing_support

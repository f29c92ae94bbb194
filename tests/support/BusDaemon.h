#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace kqu::testing_support {

/// A private message bus in a folder of its own. It keeps its address when it is started anew.
class BusDaemon {
  public:
    /// The stock policies: on a session bus everything is allowed, on a system bus everybody may
    /// connect, broadcast and ask the bus itself, and nothing else. Whoever runs the test may ask
    /// for the bus's statistics on both.
    enum class Kind { Session, System };
    enum class Start { Now, Later };

    /// Raises std::runtime_error if no daemon can be started.
    explicit BusDaemon(Kind kind = Kind::Session, Start start = Start::Now);
    ~BusDaemon();
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;

    [[nodiscard]] const std::string& Address() const { return address_; }
    /// Where the bus listens, or would.
    [[nodiscard]] std::filesystem::path Socket() const { return folder_ / "bus"; }

    /// Starts the daemon and waits until it listens.
    void Run();
    /// Kills the daemon.
    void Stop();

  private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t daemon_ = -1;
};

/// Runs a command line of the shell and waits for it. Its exit status.
int RunCommand(const std::string& command);

} // namespace kqu::testing_support

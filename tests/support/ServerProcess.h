#pragma once

#include "platform/CDeleter.h"

#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace kqu::testing_support {

/// A server that lives no longer than this object, or than the test.
class ServerProcess {
  public:
    /// Runs a command line, and returns once the server has told on its standard output that it
    /// listens. Raises std::runtime_error if it ends instead.
    explicit ServerProcess(const std::string& command)
        : output_(
              popen(("echo $$; exec setpriv --pdeathsig KILL " + command + " 2>/dev/null").c_str(),
                    "re")) {
        char word[256];
        if (fscanf(output_.get(), "%d %255s", &process_, word) != 2)
            throw std::runtime_error("cannot be started: " + command);
        told_ = word;
    }
    ~ServerProcess() { End(SIGTERM); }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    /// The first word that it wrote when it was ready.
    [[nodiscard]] const std::string& Told() const { return told_; }
    /// Returns when it is gone.
    void End(int signal) {
        if (output_)
            kill(process_, signal);
        output_.reset();
    }

  private:
    platform::CPointer<FILE, pclose> output_;
    pid_t process_ = 0;
    std::string told_;
};

} // namespace kqu::testing_support

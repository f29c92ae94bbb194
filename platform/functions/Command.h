#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>

namespace kqu::platform {

/// A command that runs in the shell (POSIX sh) and whose output is read. It has no standard error,
/// so that nobody sees its complaints. A request to terminate ends whatever is waited for, and the
/// command with it.
class Command {
  public:
    /// Nil if the command can't be started.
    [[nodiscard]] static std::unique_ptr<Command> Start(const std::string& command);
    ~Command();
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Fills the block; fewer bytes only at the end of the output or in error. The output ends
    /// after 16 MiB, several times what any command here has to say.
    [[nodiscard]] std::size_t Read(std::byte* block, std::size_t size);
    [[nodiscard]] bool IsAtEnd() const { return isAtEnd_; }
    /// Also set when a request to terminate ended the reading.
    [[nodiscard]] bool IsInError() const { return isInError_; }
    /// Closes the stream and waits for the command. Its exit status in the form of wait(2), or -1.
    int Close();

  private:
    Command(int output, pid_t process) : output_(output), process_(process) {}

    int output_;
    pid_t process_;
    std::size_t left_ = std::size_t{16} << 20U;
    bool isAtEnd_ = false;
    bool isInError_ = false;
};

} // namespace kqu::platform

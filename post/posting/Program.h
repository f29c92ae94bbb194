#pragma once

#include <functional>
#include <getopt.h>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace kqu::post {

/// The command line can't be understood; the message is one line for the user.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The command ends with this status; the message is one line for the user.
class StatusError : public std::runtime_error {
  public:
    StatusError(const std::string& message, int exitStatus)
        : std::runtime_error(message), status(exitStatus) {}
    int status;
};

/// One of the two commands.
struct Program {
    const char* name;
    const char* version;
    std::string (*help)();
    /// What it does with its arguments, of which the first is its name; returns its exit status.
    int (*run)(std::span<char*> arguments);
    int failed, wrongUsage;
};

/// An option of a command line, whether it has a value (see getopt_long(3)), and what it does with
/// it.
struct Option {
    const char* name;
    int hasValue;
    std::function<void(const char* value)> take;
};
[[nodiscard]] Option Flag(const char* name, bool& flag, bool value = true);

/// Reads options by getopt_long(3). --help and --version end the reading and are answered by
/// RunProgram. `order` is "+" where the first operand ends the options; else options and operands
/// may be mixed, and the operands are moved to the end. Returns the operands. Raises UsageError.
std::span<char*> ReadOptions(std::span<char*> arguments, const char* order,
                             const std::vector<Option>& table);

/// The frame of a command's main function. Closed standard streams are filled first, so that
/// nothing that is opened later takes their place. An exception is reported in one line on
/// standard error, as is output that can't be written. Returns the exit status.
[[nodiscard]] int RunProgram(const Program& program, int count, char** values);

/// Reports an error in one line on standard error, whatever it quotes, and returns the status.
int Complain(const char* name, const std::string& reason, int status);

} // namespace kqu::post

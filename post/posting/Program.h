#pragma once

#include <functional>
#include <getopt.h>
#include <span>
#include <stdexcept>

namespace kqu::post {

/// The command line can't be understood; the message is one line for the user.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What a command does with its arguments, of which the first is its name; returns its exit status.
using Action = int (*)(std::span<char*> arguments);

/// Reads options by getopt_long(3) and hands each one's `val` and value over. `order` is "+" where
/// the first operand ends the options; else options and operands may be mixed, and the operands are
/// moved to the end. Returns the operands. Raises UsageError.
std::span<char*> ReadOptions(std::span<char*> arguments, const char* order, const option* options,
                             const std::function<void(int option, const char* value)>& take);

/// The frame of a command's main function. Closed standard streams are filled first, so that
/// nothing that is opened later takes their place. An exception is reported in one line on
/// standard error, as is output that can't be written. Returns the exit status: `wrongUsage` after
/// a UsageError, `failed` after anything else.
[[nodiscard]] int RunProgram(const char* name, std::span<char*> values, Action action, int failed,
                             int wrongUsage);

/// Reports an error in one line on standard error, whatever it quotes, and returns the status.
int Complain(const char* name, const char* reason, int status);

} // namespace kqu::post

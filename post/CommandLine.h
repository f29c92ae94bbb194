#pragma once

#include "post/Tools.h"

#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kqu::post {

/// The command line can't be understood; the message is one line for the user.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Request {
    enum class Action { Post, Help, Version };
    Action action = Action::Post;
    const Tool* tool = nullptr;
    std::string name;
    bool onSystemBus = false;
    std::vector<std::pair<std::string, std::string>> values;
};

/// Reads the arguments behind the program's name. Raises UsageError.
[[nodiscard]] Request ParseCommandLine(std::span<const char* const> arguments);

[[nodiscard]] std::string HelpText();

} // namespace kqu::post

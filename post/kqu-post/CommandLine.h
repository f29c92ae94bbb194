#pragma once

#include "post/posting/Poster.h"

#include <span>
#include <stdexcept>
#include <string>

namespace kqu::post {

/// The command line can't be understood; the message is one line for the user.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Request {
    enum class Action { Post, StartOnly, Help, Version };
    Action action = Action::Post;
    Bus bus = Bus::Session;
    /// Whether a post has the messenger started first.
    bool starts = true;
    Notification notification;
};

/// Reads the arguments behind the program's name. Raises UsageError.
[[nodiscard]] Request ParseCommandLine(std::span<const char* const> arguments);

[[nodiscard]] std::string HelpText();

} // namespace kqu::post

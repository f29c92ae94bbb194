#pragma once

#include "post/kqu-run/Launch.h"
#include "post/posting/Program.h"
#include "post/posting/Tools.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kqu::run {

using post::UsageError;

/// What the command line asks for.
struct Request {
    const post::Tool* tool = nullptr;
    std::optional<std::string> volume, destination, name;
    /// "sleep", "shutdown" or empty.
    std::string after;
    bool onSystemBus = false;
    /// Whether the messenger may be started for the row.
    bool startsMessenger = true;
    /// Whether names of files may be posted where every user can read them.
    bool showsFiles = false;
    /// When a desktop notification is shown at the end.
    enum class Notifies { Never, Always, Failure };
    Notifies notifies = Notifies::Never;
    /// The stream whose last percentage is shown, or 0.
    int percentStream = 0;
    /// A command that runs already, or 0.
    pid_t process = 0;
    bool isVerbose = false;
    std::vector<std::string> command;
};

/// Reads the program's arguments, of which the first is its name. Raises UsageError.
[[nodiscard]] Request ParseCommandLine(std::span<char*> arguments);

[[nodiscard]] std::string HelpText();

} // namespace kqu::run

#pragma once

#include "post/posting/Poster.h"
#include "post/posting/Program.h"

#include <span>
#include <string>

namespace kqu::post {

/// What the command line asks for.
struct Request {
    bool startsOnly = false;
    Bus bus = Bus::Session;
    /// Whether a post has the messenger started first.
    bool starts = true;
    /// Whether keys pass that the tool doesn't have.
    bool anyKey = false;
    /// Whether values pass that are no numbers where numbers belong.
    bool anyValue = false;
    Notification notification;
};

/// Reads the program's arguments, of which the first is its name. Raises UsageError.
[[nodiscard]] Request ParseCommandLine(std::span<char*> arguments);

[[nodiscard]] std::string HelpText();

} // namespace kqu::post

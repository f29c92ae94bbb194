#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace kqu::run {

/// How a command is started. A tool's reader may add to it.
struct Launch {
    std::vector<std::string> arguments;
    /// Where among the arguments the tool's own name is: commands such as nice come before it.
    std::size_t tool = 0;
    /// The tool runs behind a command that gives it another user: descriptors and environment do
    /// not get through, and /proc does not tell of it.
    bool isForeign = false;
    /// Whether standard input, output and error are a terminal.
    std::array<bool, 3> terminal{};
    /// Which of the tool's streams is read: 1, 2, or 0 for none.
    int stream = 0;
    /// The stream whose last percentage the user wants to see, or 0.
    int percentStream = 0;
    /// rsync was asked for its progress by us, and it has to be taken out of the stream again.
    bool filters = false;
    /// The descriptor of a file of ours that the tool writes its progress to, or -1.
    int channel = -1;
};

} // namespace kqu::run

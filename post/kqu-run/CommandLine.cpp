#include "post/kqu-run/CommandLine.h"

#include <algorithm>
#include <charconv>

namespace kqu::run {

namespace {
/// One of the words, of which the first may stand for no value; its place among them.
int Choice(const std::string& option, const char* value, const std::vector<std::string>& words) {
    const auto found = std::find(words.begin(), words.end(), value != nullptr ? value : "");
    if (found == words.end())
        throw UsageError(option + " is " + words[words.size() - 2] +
                         (words[words.size() - 2].empty() ? "without a value, or =" : " or ") +
                         words.back() + ", not " + value);
    return static_cast<int>(found - words.begin());
}

pid_t ProcessOf(const std::string& value) {
    pid_t process = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), process);
    if (read.ec != std::errc() || read.ptr != value.data() + value.size() || process <= 0)
        throw UsageError("--pid is the number of a process, not " + value);
    return process;
}

/// A text that is kept as it is.
post::Option Text(const char* name, std::optional<std::string>& text) {
    return {name, required_argument, [&text](const char* value) { text = value; }};
}

std::vector<post::Option> OptionsOf(Request& to) {
    return {{"after", required_argument,
             [&](const char* value) {
                 Choice("--after", value, {"sleep", "shutdown"});
                 to.after = value;
             }},
            Text("destination", to.destination),
            Text("name", to.name),
            post::Flag("no-start", to.startsMessenger, false),
            {"notify", optional_argument,
             [&](const char* value) {
                 const bool always = Choice("--notify", value, {"", "failure"}) == 0;
                 to.notifies = always ? Request::Notifies::Always : Request::Notifies::Failure;
             }},
            {"percent", optional_argument,
             [&](const char* value) {
                 to.percentStream = Choice("--percent", value, {"", "stderr"}) + 1;
             }},
            {"pid", required_argument, [&](const char* value) { to.process = ProcessOf(value); }},
            post::Flag("show-files", to.showsFiles),
            post::Flag("system", to.onSystemBus),
            {"tool", required_argument, [&](const char* value) { to.tool = post::ToolOf(value); }},
            post::Flag("verbose", to.isVerbose),
            Text("volume", to.volume)};
}
} // namespace

Request ParseCommandLine(std::span<char*> arguments) {
    Request request;
    const auto command = post::ReadOptions(arguments, "+", OptionsOf(request));
    request.command.assign(command.begin(), command.end());
    if (request.process != 0 && (!request.command.empty() || request.percentStream != 0 ||
                                 request.notifies == Request::Notifies::Failure))
        throw UsageError("with --pid goes no command, no --percent and no --notify=failure");
    if (request.command.empty() && request.process == 0)
        throw UsageError("no command was given; see kqu-run --help");
    return request;
}

std::string HelpText() {
    return R"(Usage: kqu-run [OPTION]... [--] COMMAND [ARGUMENT]...
Runs a command and shows it in the panel of the KQU Messenger while it runs.

  --after WISH        what the machine shall do afterwards: sleep or shutdown (a badge)
  --tool TOOL         the row's kind: scanner, backup or defragmenter
  --pid NUMBER        show a command that runs already, instead of running one
  --percent[=stderr]  show the last "NN%" that the command prints
  --notify[=failure]  show a desktop notification when the command has ended (badly)
  --volume NAME       the volume's name, instead of the one that was found
  --destination NAME  the destination's name, instead of the one that was found
  --name NAME         the task's name on the bus
  --system            post on the system bus, as is done for root
  --show-files        post names of files there too, where every user can read them
  --no-start          don't start the messenger
  --verbose           report why the row can't be shown
  --help              show this text
  --version           show the version

rsync, dd, badblocks, fsck, e2fsck, e4defrag, restic, borg and tar are read in their own words; any
other command has a bar by what the kernel reports of its files. The row goes when the command ends.
Exit status: the command's own; 125 wrong usage, 126 it can't be run, 127 it isn't there.
)";
}

} // namespace kqu::run

#include "post/kqu-run/CommandLine.h"

#include <array>
#include <charconv>

namespace kqu::run {

namespace {
enum Option {
    After = 256,
    Destination,
    Kind,
    Named,
    NoStart,
    Notify,
    OnSystemBus,
    Percent,
    Pid,
    ShowFiles,
    Verbose,
    Version,
    Volume
};

constexpr std::array<option, 15> options{{{"after", required_argument, nullptr, After},
                                          {"destination", required_argument, nullptr, Destination},
                                          {"help", no_argument, nullptr, 'h'},
                                          {"name", required_argument, nullptr, Named},
                                          {"no-start", no_argument, nullptr, NoStart},
                                          {"notify", optional_argument, nullptr, Notify},
                                          {"pid", required_argument, nullptr, Pid},
                                          {"percent", optional_argument, nullptr, Percent},
                                          {"show-files", no_argument, nullptr, ShowFiles},
                                          {"system", no_argument, nullptr, OnSystemBus},
                                          {"tool", required_argument, nullptr, Kind},
                                          {"verbose", no_argument, nullptr, Verbose},
                                          {"version", no_argument, nullptr, Version},
                                          {"volume", required_argument, nullptr, Volume},
                                          {}}};

std::string WishOf(const std::string& value) {
    if (value != "sleep" && value != "shutdown")
        throw UsageError("--after is sleep or shutdown, not " + value);
    return value;
}

Request::Notifies WhenOf(const char* value) {
    if (value != nullptr && std::string(value) != "failure")
        throw UsageError(std::string("--notify is for any end or =failure, not ") + value);
    return value == nullptr ? Request::Notifies::Always : Request::Notifies::Failure;
}

pid_t ProcessOf(const std::string& value) {
    pid_t process = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), process);
    if (read.ec != std::errc() || read.ptr != value.data() + value.size() || process <= 0)
        throw UsageError("--pid is the number of a process, not " + value);
    return process;
}

int StreamOf(const char* value) {
    if (value != nullptr && std::string(value) != "stderr")
        throw UsageError(std::string("--percent reads the output or =stderr, not ") + value);
    return value == nullptr ? 1 : 2;
}

const post::Tool* ToolOf(const std::string& value) {
    const post::Tool* tool = post::FindTool(value);
    if (tool == nullptr)
        throw UsageError("unknown tool " + value + " (there are scanner, backup and defragmenter)");
    return tool;
}

void Take(Request& request, int option, const char* value) {
    switch (option) {
    case After:
        request.after = WishOf(value);
        break;
    case Destination:
        request.destination = value;
        break;
    case Kind:
        request.tool = ToolOf(value);
        break;
    case Named:
        request.name = value;
        break;
    case NoStart:
        request.startsMessenger = false;
        break;
    case Notify:
        request.notifies = WhenOf(value);
        break;
    case Percent:
        request.percentStream = StreamOf(value);
        break;
    case Pid:
        request.process = ProcessOf(value);
        break;
    case OnSystemBus:
        request.onSystemBus = true;
        break;
    case ShowFiles:
        request.showsFiles = true;
        break;
    case Verbose:
        request.isVerbose = true;
        break;
    case Volume:
        request.volume = value;
        break;
    default:
        request.action = option == Version ? Request::Action::Version : Request::Action::Help;
    }
}
} // namespace

Request ParseCommandLine(std::span<char*> arguments) {
    Request request;
    const auto command =
        post::ReadOptions(arguments, "+", options.data(),
                          [&](int option, const char* value) { Take(request, option, value); });
    request.command.assign(command.begin(), command.end());
    if (request.process != 0 && !request.command.empty())
        throw UsageError("with --pid no command is run");
    if (request.action == Request::Action::Run && request.command.empty() && request.process == 0)
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
  --verbose           tell why the row can't be shown
  --help              show this text
  --version           show the version

rsync, dd, badblocks, e2fsck, e4defrag, restic, borg and tar are read in their own words; any other
command has a bar by what the kernel reports of its files. The row goes when the command has ended.
Exit status: the command's own; 125 wrong usage, 126 it can't be run, 127 it isn't there.
)";
}

} // namespace kqu::run

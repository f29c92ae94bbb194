#include "post/kqu-run/CommandLine.h"

#include <string_view>

namespace kqu::run {

namespace {
class Parser {
  public:
    explicit Parser(std::span<const char* const> arguments) : rest_(arguments) {}

    Request Parse() {
        while (!rest_.empty() && request_.action == Request::Action::Run) {
            const std::string_view next = rest_.front();
            if (next == "--") {
                Next();
                break;
            }
            if (!next.starts_with("-") || next == "-")
                break;
            TakeOption(Next());
        }
        request_.command.assign(rest_.begin(), rest_.end());
        if (request_.action == Request::Action::Run && request_.command.empty())
            throw UsageError("no command was given; see kqu-run --help");
        return std::move(request_);
    }

  private:
    std::string Next() {
        std::string argument = rest_.front();
        rest_ = rest_.subspan(1);
        return argument;
    }

    /// Whether it is this option; its value is then in `value_`.
    bool TakeValue(const std::string& argument, const std::string& option) {
        if (argument.starts_with(option + "=")) {
            value_ = argument.substr(option.size() + 1);
            return true;
        }
        if (argument != option)
            return false;
        if (rest_.empty())
            throw UsageError("option " + option + " needs a value");
        value_ = Next();
        return true;
    }

    void TakeOption(const std::string& argument) {
        if (argument == "--help" || argument == "-h")
            request_.action = Request::Action::Help;
        else if (argument == "--version")
            request_.action = Request::Action::Version;
        else if (argument == "--system")
            request_.onSystemBus = true;
        else if (argument == "--no-start")
            request_.startsMessenger = false;
        else if (argument == "--show-files")
            request_.showsFiles = true;
        else if (argument == "--verbose")
            request_.isVerbose = true;
        else if (TakeValue(argument, "--tool"))
            TakeTool();
        else if (TakeValue(argument, "--after"))
            TakeAfter();
        else if (TakeValue(argument, "--volume"))
            request_.volume = value_;
        else if (TakeValue(argument, "--destination"))
            request_.destination = value_;
        else if (TakeValue(argument, "--name"))
            request_.name = value_;
        else
            throw UsageError("unknown option " + argument);
    }

    void TakeTool() {
        request_.tool = post::FindTool(value_);
        if (request_.tool == nullptr)
            throw UsageError("unknown tool " + value_ +
                             " (there are scanner, backup and defragmenter)");
    }

    void TakeAfter() {
        if (value_ != "sleep" && value_ != "shutdown")
            throw UsageError("--after is sleep or shutdown, not " + value_);
        request_.after = value_;
    }

    std::span<const char* const> rest_;
    Request request_;
    std::string value_;
};
} // namespace

Request ParseCommandLine(std::span<const char* const> arguments) {
    return Parser(arguments).Parse();
}

std::string HelpText() {
    return R"(Usage: kqu-run [OPTION]... [--] COMMAND [ARGUMENT]...
Runs a command and shows it in the panel of the KQU Messenger while it runs.

  --after WISH        what the machine shall do afterwards: sleep or shutdown (a badge)
  --tool TOOL         the row's kind: scanner, backup or defragmenter
  --volume NAME       the volume's name, instead of the one that was found
  --destination NAME  the destination's name, instead of the one that was found
  --name NAME         the task's name on the bus
  --system            post on the system bus, as is done for root
  --show-files        post names of files there too, where every user can read them
  --no-start          don't start the messenger
  --verbose           tell why the row can't be shown
  --help              show this text
  --version           show the version

rsync, dd, badblocks, e2fsck, e4defrag, restic, borg and tar have a progress bar; any other
command has a row without one. The row goes when the command has ended.
Exit status: the command's own; 125 wrong usage, 126 it can't be run, 127 it isn't there.
)";
}

} // namespace kqu::run

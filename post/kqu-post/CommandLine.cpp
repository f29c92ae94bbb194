#include "post/kqu-post/CommandLine.h"

#include "post/posting/Utf8.h"

#include <algorithm>
#include <string_view>

namespace kqu::post {

namespace {
constexpr std::string_view nameMark = "kqs_disk";

std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

template <class Items>
std::string Listed(const Items& items) {
    std::string list;
    for (const std::string_view item : items)
        list += (list.empty() ? "" : ", ") + std::string(item);
    return list;
}

std::string ToolNames() {
    std::vector<std::string_view> names;
    for (const Tool& tool : Tools())
        names.push_back(tool.name);
    return Listed(names);
}

class Parser {
  public:
    explicit Parser(std::span<const char* const> arguments) : rest_(arguments) {}

    Request Parse() {
        while (!rest_.empty() && !IsAboutItself())
            Take(Next());
        if (request_.action == Request::Action::Post)
            CheckWhole();
        else if (!IsAboutItself() && request_.notification.tool != nullptr)
            throw UsageError("with --start-only nothing is posted");
        return std::move(request_);
    }

  private:
    [[nodiscard]] bool IsAboutItself() const {
        return request_.action == Request::Action::Help ||
               request_.action == Request::Action::Version;
    }

    std::string Next() {
        std::string argument = rest_.front();
        rest_ = rest_.subspan(1);
        ++count_;
        if (!IsUtf8(argument))
            throw UsageError("argument " + std::to_string(count_) + " is not UTF-8 text");
        return argument;
    }

    std::string ValueOf(const std::string& option, const std::string& argument) {
        if (argument.size() > option.size())
            return argument.substr(option.size() + 1);
        if (rest_.empty())
            throw UsageError("option " + option + " needs a value");
        return Next();
    }

    static bool IsOption(const std::string& argument, const std::string& option) {
        return argument == option || argument.starts_with(option + "=");
    }

    void Take(const std::string& argument) {
        if (!optionsEnded_ && argument.starts_with("-"))
            TakeOption(argument);
        else
            TakeValue(argument);
    }

    void TakeOption(const std::string& argument) {
        if (argument == "--")
            optionsEnded_ = true;
        else if (argument == "--help" || argument == "-h")
            request_.action = Request::Action::Help;
        else if (argument == "--version")
            request_.action = Request::Action::Version;
        else if (argument == "--system")
            request_.bus = Bus::System;
        else if (argument == "--no-start")
            request_.starts = false;
        else if (argument == "--start-only")
            request_.action = Request::Action::StartOnly;
        else if (argument == "--any-key")
            anyKey_ = true;
        else if (IsOption(argument, "--tool"))
            TakeTool(ValueOf("--tool", argument));
        else if (IsOption(argument, "--name"))
            request_.notification.name = ValueOf("--name", argument);
        else
            throw UsageError("unknown option " + argument);
    }

    void TakeTool(const std::string& name) {
        request_.notification.tool = FindTool(name);
        if (request_.notification.tool == nullptr)
            throw UsageError("unknown tool " + name + " (there are " + ToolNames() + ")");
    }

    void TakeValue(const std::string& argument) {
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos || equals == 0)
            throw UsageError("not of the form KEY=VALUE: " + argument);
        request_.notification.values.emplace_back(argument.substr(0, equals),
                                                  argument.substr(equals + 1));
    }

    void CheckWhole() const {
        if (request_.notification.tool == nullptr)
            throw UsageError("no --tool was given (there are " + ToolNames() + ")");
        if (Lowered(request_.notification.name).find(nameMark) == std::string::npos)
            throw UsageError("the --name must contain KQS_disk");
        for (const auto& [key, value] : request_.notification.values)
            if (!anyKey_ && !HasKey(*request_.notification.tool, key))
                throw UsageError("the " + std::string(request_.notification.tool->name) +
                                 " has no key " + key + " (it has " +
                                 Listed(request_.notification.tool->keys) + ")");
    }

    std::span<const char* const> rest_;
    int count_ = 0;
    Request request_;
    bool anyKey_ = false;
    bool optionsEnded_ = false;
};
} // namespace

Request ParseCommandLine(std::span<const char* const> arguments) {
    return Parser(arguments).Parse();
}

std::string HelpText() {
    std::string text =
        "Usage: kqu-post --tool TOOL --name NAME [--system] [--no-start] [--any-key] KEY=VALUE...\n"
        "       kqu-post --start-only [--system]\n"
        "Posts one status notification for the panel of the KQU Messenger, which is started\n"
        "first if it doesn't run.\n\n"
        "  --tool TOOL  the tool that posts: " +
        ToolNames() +
        "\n"
        "  --name NAME  the task's name; must contain KQS_disk and stay the same for the\n"
        "               whole task\n"
        "  --system     post on the system bus, as tools that run as root do\n"
        "  --no-start   post whether or not the messenger runs\n"
        "  --start-only start the messenger and post nothing\n"
        "  --any-key    let keys through that the tool doesn't have\n"
        "  --help       show this text\n"
        "  --version    show the version\n\n"
        "Keys of the tools, exact in case; all values are text:\n";
    for (const Tool& tool : Tools())
        text += "  " + std::string(tool.name) + ": " + Listed(tool.keys) + "\n";
    return text + "\nThe row goes when the process named in PID goes.\n"
                  "Exit status: 0 the bus has taken the message, 1 it has not, 2 wrong usage.\n"
                  "With --start-only: 0 the messenger listens, 1 it does not.\n";
}

} // namespace kqu::post

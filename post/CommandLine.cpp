#include "post/CommandLine.h"

#include <algorithm>
#include <cstdint>
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

/// Whether the bus would take the text: UTF-8 without a NUL, which no argument holds anyway.
bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        const std::size_t length = first < 0x80   ? 1
                                   : first < 0xC2 ? 0
                                   : first < 0xE0 ? 2
                                   : first < 0xF0 ? 3
                                   : first < 0xF5 ? 4
                                                  : 0;
        if (length == 0 || text.size() < length)
            return false;
        std::uint32_t code = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xC0U) != 0x80U)
                return false;
            code = code << 6U | (next & 0x3FU);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

class Parser {
  public:
    explicit Parser(std::span<const char* const> arguments) : rest_(arguments) {}

    Request Parse() {
        while (!rest_.empty() && request_.action == Request::Action::Post)
            Take(Next());
        if (request_.action == Request::Action::Post)
            CheckWhole();
        return std::move(request_);
    }

  private:
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
            request_.onSystemBus = true;
        else if (argument == "--any-key")
            anyKey_ = true;
        else if (IsOption(argument, "--tool"))
            TakeTool(ValueOf("--tool", argument));
        else if (IsOption(argument, "--name"))
            request_.name = ValueOf("--name", argument);
        else
            throw UsageError("unknown option " + argument);
    }

    void TakeTool(const std::string& name) {
        request_.tool = FindTool(name);
        if (request_.tool == nullptr)
            throw UsageError("unknown tool " + name + " (there are " + ToolNames() + ")");
    }

    void TakeValue(const std::string& argument) {
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos || equals == 0)
            throw UsageError("not of the form KEY=VALUE: " + argument);
        request_.values.emplace_back(argument.substr(0, equals), argument.substr(equals + 1));
    }

    void CheckWhole() const {
        if (request_.tool == nullptr)
            throw UsageError("no --tool was given (there are " + ToolNames() + ")");
        if (Lowered(request_.name).find(nameMark) == std::string::npos)
            throw UsageError("the --name must contain KQS_disk");
        for (const auto& [key, value] : request_.values)
            if (!anyKey_ && !HasKey(*request_.tool, key))
                throw UsageError("the " + std::string(request_.tool->name) + " has no key " + key +
                                 " (it has " + Listed(request_.tool->keys) + ")");
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
        "Usage: kqu-post --tool TOOL --name NAME [--system] [--any-key] KEY=VALUE...\n"
        "Posts one status notification for the panel of the KQU Messenger.\n\n"
        "  --tool TOOL  the tool that posts: " +
        ToolNames() +
        "\n"
        "  --name NAME  the task's name; must contain KQS_disk and stay the same for the\n"
        "               whole task\n"
        "  --system     post on the system bus, as tools that run as root do\n"
        "  --any-key    let keys through that the tool doesn't have\n"
        "  --help       show this text\n"
        "  --version    show the version\n\n"
        "Keys of the tools, exact in case; all values are text:\n";
    for (const Tool& tool : Tools())
        text += "  " + std::string(tool.name) + ": " + Listed(tool.keys) + "\n";
    return text + "\nThe row goes when the process named in PID goes.\n"
                  "Exit status: 0 the bus has taken the message, 1 it has not, 2 wrong usage.\n";
}

} // namespace kqu::post

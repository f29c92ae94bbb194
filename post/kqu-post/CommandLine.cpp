#include "post/kqu-post/CommandLine.h"

#include "post/posting/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
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

enum Option { AnyKey = 256, AnyValue, Named, NoStart, Of, OnSystemBus, StartOnly, Version };

constexpr std::array<option, 10> options{{{"any-key", no_argument, nullptr, AnyKey},
                                          {"any-value", no_argument, nullptr, AnyValue},
                                          {"help", no_argument, nullptr, 'h'},
                                          {"name", required_argument, nullptr, Named},
                                          {"no-start", no_argument, nullptr, NoStart},
                                          {"start-only", no_argument, nullptr, StartOnly},
                                          {"system", no_argument, nullptr, OnSystemBus},
                                          {"tool", required_argument, nullptr, Of},
                                          {"version", no_argument, nullptr, Version},
                                          {}}};

const Tool* ToolOf(const std::string& name) {
    const Tool* tool = FindTool(name);
    if (tool == nullptr)
        throw UsageError("unknown tool " + name + " (there are " + ToolNames() + ")");
    return tool;
}

void Take(Request& request, int option, const char* value) {
    switch (option) {
    case AnyKey:
        request.anyKey = true;
        break;
    case AnyValue:
        request.anyValue = true;
        break;
    case Named:
        request.notification.name = value;
        break;
    case NoStart:
        request.starts = false;
        break;
    case Of:
        request.notification.tool = ToolOf(value);
        break;
    case OnSystemBus:
        request.bus = Bus::System;
        break;
    case StartOnly:
        request.action = Request::Action::StartOnly;
        break;
    default:
        request.action = option == Version ? Request::Action::Version : Request::Action::Help;
    }
}

std::pair<std::string, std::string> ValueIn(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError("not of the form KEY=VALUE: " + argument);
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

/// The keys whose values are numbers, and the largest that makes sense.
constexpr std::array<std::pair<std::string_view, double>, 5> numbers{{{"PID", 4194304},
                                                                      {"Progress", 1000},
                                                                      {"Type", 1000},
                                                                      {"FileProgress", 100},
                                                                      {"NumFilesExamined", 1e15}}};

/// Refuses what is no decimal number, and warns of one that is too large.
void CheckNumber(const std::string& key, const std::string& value) {
    const auto* const known = std::find_if(numbers.begin(), numbers.end(),
                                           [&](const auto& number) { return number.first == key; });
    if (known == numbers.end())
        return;
    double number = 0;
    const char* const end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, number, std::chars_format::fixed);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(number))
        throw UsageError("the value of " + key + " is no decimal number: " + value);
    if (number > known->second)
        Complain("kqu-post",
                 ("warning: " + key + " is more than " +
                  std::to_string(std::llround(known->second)) + ": " + value)
                     .c_str(),
                 0);
}

void CheckWhole(const Request& request) {
    const auto& [tool, name, values] = request.notification;
    if (tool == nullptr)
        throw UsageError("no --tool was given (there are " + ToolNames() + ")");
    if (Lowered(name).find(nameMark) == std::string::npos)
        throw UsageError("the --name must contain KQS_disk");
    for (const auto& [key, value] : values) {
        if (!request.anyValue)
            CheckNumber(key, value);
        if (!request.anyKey && !HasKey(*tool, key))
            throw UsageError("the " + std::string(tool->name) + " has no key " + key + " (it has " +
                             Listed(tool->keys) + ")");
    }
}
} // namespace

Request ParseCommandLine(std::span<char*> arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i)
        if (!IsUtf8(arguments[i]))
            throw UsageError("argument " + std::to_string(i) + " is not UTF-8 text");
    Request request;
    const auto values =
        ReadOptions(arguments, "", options.data(),
                    [&](int option, const char* value) { Take(request, option, value); });
    for (const char* value : values)
        request.notification.values.push_back(ValueIn(value));
    if (request.action == Request::Action::Post)
        CheckWhole(request);
    else if (request.action == Request::Action::StartOnly && request.notification.tool != nullptr)
        throw UsageError("with --start-only nothing is posted");
    return request;
}

std::string HelpText() {
    std::string text =
        "Usage: kqu-post --tool TOOL --name NAME [--system] [--no-start] [--any-key] "
        "[--any-value]\n                KEY=VALUE...\n"
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
        "  --any-value  let values through that are no numbers, and warn of none\n"
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

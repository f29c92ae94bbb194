#include "post/posting/Poster.h"
#include "post/posting/Program.h"
#include "post/posting/StartMessenger.h"
#include "post/posting/Text.h"

#include <charconv>
#include <cmath>
#include <csignal>
#include <cstring>
#include <map>

// kqu-post: posts one status notification.

namespace {
using namespace kqu::post;

constexpr int notTaken = 1;
constexpr int wrongUsage = 2;

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

std::string KeysOf(const Tool& tool) {
    std::string list;
    for (const std::string_view key : tool.keys)
        list += (list.empty() ? "" : ", ") + std::string(key);
    return list;
}

std::vector<Option> OptionsOf(Request& to) {
    return {Flag("any-key", to.anyKey),
            Flag("any-value", to.anyValue),
            Flag("no-start", to.starts, false),
            Flag("start-only", to.startsOnly),
            {"name", required_argument, [&](const char* value) { to.notification.name = value; }},
            {"system", no_argument, [&](const char*) { to.bus = Bus::System; }},
            {"tool", required_argument,
             [&](const char* value) { to.notification.tool = ToolOf(value); }}};
}

std::pair<std::string, std::string> ValueIn(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError("not of the form KEY=VALUE: " + argument);
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

/// Refuses what is no decimal number where one belongs, and warns of one that is too large.
void CheckNumber(const std::string& key, const std::string& value) {
    // The keys whose values are numbers, and the largest that makes sense.
    static const std::map<std::string_view, double> numbers{{"PID", 4194304},
                                                            {"Progress", 1000},
                                                            {"Type", 1000},
                                                            {"FileProgress", 100},
                                                            {"NumFilesExamined", 1e15}};
    const auto known = numbers.find(key);
    if (known == numbers.end())
        return;
    double number = 0;
    const char* const end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, number, std::chars_format::fixed);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(number))
        throw UsageError("the value of " + key + " is no decimal number: " + value);
    if (number > known->second)
        Complain("kqu-post",
                 "warning: " + key + " is more than " +
                     std::to_string(std::llround(known->second)) + ": " + value,
                 0);
}

void CheckWhole(const Request& request) {
    const auto& [tool, name, values] = request.notification;
    if (tool == nullptr)
        throw UsageError("no --tool was given (there are " + ToolNames() + ")");
    if (strcasestr(name.c_str(), "KQS_disk") == nullptr)
        throw UsageError("the --name must contain KQS_disk");
    for (const auto& [key, value] : values) {
        if (!request.anyValue)
            CheckNumber(key, value);
        if (!request.anyKey && !HasKey(*tool, key))
            throw UsageError("the " + std::string(tool->name) + " has no key " + key + " (it has " +
                             KeysOf(*tool) + ")");
    }
}
Request ParseCommandLine(std::span<char*> arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i)
        if (!IsUtf8(arguments[i]))
            throw UsageError("argument " + std::to_string(i) + " is not UTF-8 text");
    Request request;
    for (const char* value : ReadOptions(arguments, "", OptionsOf(request)))
        request.notification.values.push_back(ValueIn(value));
    if (!request.startsOnly)
        CheckWhole(request);
    else if (request.notification.tool != nullptr)
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
        text += "  " + std::string(tool.name) + ": " + KeysOf(tool) + "\n";
    return text +
           "\nThe row goes when the process named in PID goes.\n"
           "Exit status: 0 the bus has taken the message, 1 it has not, 2 wrong usage.\n"
           "With --start-only: 0 the messenger listens, 1 it does not, 3 the bus is silent.\n";
}

Connection ConnectFor(const Request& request) {
    try {
        return Connect(request.bus, request.startsOnly ? untilSilent : patience);
    } catch (const SilentBus& error) {
        throw StatusError(error.what(), request.startsOnly ? busIsSilent : notTaken);
    }
}

int Run(std::span<char*> arguments) {
    // A parent may have it ignored; then no child's status could be had.
    std::signal(SIGCHLD, SIG_DFL);
    const Request request = ParseCommandLine(arguments);
    const Connection connection = ConnectFor(request);
    const bool listens = (request.starts || request.startsOnly) && StartMessenger(connection);
    if (request.startsOnly && !listens)
        throw StatusError("the messenger doesn't run and can't be started", notTaken);
    if (!request.startsOnly)
        Post(connection, request.notification);
    return 0;
}
} // namespace

int main(int count, char** values) {
    return kqu::post::RunProgram({"kqu-post", KQU_VERSION, HelpText, Run, notTaken, wrongUsage},
                                 count, values);
}

#include "post/posting/Program.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace kqu::post {

namespace {
/// What is asked for instead of the command's own work.
enum class Shown { Help = 'h', Version = 'v' };
} // namespace

Option Flag(const char* name, bool& flag, bool value) {
    return {name, no_argument, [&flag, value](const char*) { flag = value; }};
}

std::span<char*> ReadOptions(std::span<char*> arguments, const char* order,
                             const std::vector<Option>& table) {
    // Mode, own messages, and the short form that every command has.
    const std::string shortOptions = std::string(order) + ":h";
    constexpr int first = 256;
    std::vector<option> options{
        {"help", no_argument, nullptr, static_cast<int>(Shown::Help)},
        {"version", no_argument, nullptr, static_cast<int>(Shown::Version)}};
    for (const Option& one : table)
        options.push_back(
            {one.name, one.hasValue, nullptr, first + static_cast<int>(&one - table.data())});
    options.push_back({});
    optind = 0;
    opterr = 0;
    const auto count = static_cast<int>(arguments.size());
    int found = 0;
    while ((found = getopt_long(count, arguments.data(), shortOptions.c_str(), options.data(),
                                nullptr)) >= 0) {
        const std::string last = arguments[static_cast<std::size_t>(optind - 1)];
        if (found == ':')
            throw UsageError("option " + last + " needs a value");
        if (found == '?')
            throw UsageError("unknown option " + last);
        if (found < first)
            throw static_cast<Shown>(found);
        table[static_cast<std::size_t>(found - first)].take(optarg);
    }
    return arguments.subspan(std::min(arguments.size(), static_cast<std::size_t>(optind)));
}

int RunProgram(const Program& program, int count, char** values) {
    const auto& [name, version, help, run, failed, wrongUsage] = program;
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_CLOEXEC);
    int status = 0;
    try {
        status = run({values, static_cast<std::size_t>(count)});
    } catch (const Shown shown) {
        const std::string text =
            shown == Shown::Help ? help() : std::string(name) + " " + version + "\n";
        std::fputs(text.c_str(), stdout);
    } catch (const UsageError& error) {
        return Complain(name, error.what(), wrongUsage);
    } catch (const StatusError& error) {
        return Complain(name, error.what(), error.status);
    } catch (const std::exception& error) {
        return Complain(name, error.what(), failed);
    }
    return std::fflush(stdout) == 0 ? status : Complain(name, std::strerror(errno), failed);
}

int Complain(const char* name, const std::string& reason, int status) {
    std::string text = reason;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }, '?');
    std::fprintf(stderr, "%s: %s\n", name, text.c_str());
    return status;
}

} // namespace kqu::post

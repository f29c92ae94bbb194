#include "post/posting/Program.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace kqu::post {

std::span<char*> ReadOptions(std::span<char*> arguments, const char* order, const option* options,
                             const std::function<void(int option, const char* value)>& take) {
    // Mode, own messages, and the short form that every command has.
    const std::string shortOptions = std::string(order) + ":h";
    optind = 0;
    opterr = 0;
    const auto count = static_cast<int>(arguments.size());
    int found = 0;
    while ((found = getopt_long(count, arguments.data(), shortOptions.c_str(), options, nullptr)) >=
           0) {
        const std::string last = arguments[static_cast<std::size_t>(optind - 1)];
        if (found == ':')
            throw UsageError("option " + last + " needs a value");
        if (found == '?')
            throw UsageError("unknown option " + last);
        take(found, optarg);
    }
    return arguments.subspan(std::min(arguments.size(), static_cast<std::size_t>(optind)));
}

int RunProgram(const char* name, std::span<char*> values, Action action, int failed,
               int wrongUsage) {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_CLOEXEC);
    try {
        const int status = action(values);
        if (std::fflush(stdout) != 0)
            return Complain(name, std::strerror(errno), failed);
        return status;
    } catch (const UsageError& error) {
        return Complain(name, error.what(), wrongUsage);
    } catch (const std::exception& error) {
        return Complain(name, error.what(), failed);
    }
}

int Complain(const char* name, const char* reason, int status) {
    std::string text = reason;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }, '?');
    std::fprintf(stderr, "%s: %s\n", name, text.c_str());
    return status;
}

} // namespace kqu::post

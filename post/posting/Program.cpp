#include "post/posting/Program.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace kqu::post {

int RunProgram(const char* name, std::span<const char* const> values, Action action, int failed,
               int wrongUsage) {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_CLOEXEC);
    try {
        const int status = action(values.subspan(values.empty() ? 0 : 1));
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

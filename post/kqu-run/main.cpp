#include "post/kqu-run/CommandLine.h"
#include "post/kqu-run/Run.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

// kqu-run: runs a command and shows it in the messenger's panel.

namespace {
constexpr int wrongUsage = 125;

/// One line, whatever the arguments hold that it quotes.
int Complain(const std::exception& error, int status) {
    std::string text = error.what();
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }, '?');
    std::fprintf(stderr, "kqu-run: %s\n", text.c_str());
    return status;
}

int RunCommand(kqu::run::Request request) {
    kqu::run::Run run(std::move(request));
    const kqu::run::Ending ending = run.Execute();
    if (ending.signal != 0)
        kqu::run::DieBy(ending.signal);
    // Threads may still wait for a bus or a disk; nobody waits for them. The first process of a
    // container outlives its own signals.
    _exit(ending.signal != 0 ? 128 + ending.signal : ending.status);
}

int Do(std::span<const char* const> arguments) {
    using kqu::run::Request;
    Request request = kqu::run::ParseCommandLine(arguments);
    switch (request.action) {
    case Request::Action::Help:
        std::fputs(kqu::run::HelpText().c_str(), stdout);
        break;
    case Request::Action::Version:
        std::puts("kqu-run " KQU_VERSION);
        break;
    case Request::Action::Run:
        return RunCommand(std::move(request));
    }
    return 0;
}
} // namespace

int main(int count, char** values) {
    // What we open must not take the place of a standard stream that is closed. The tool finds it
    // closed all the same.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_CLOEXEC);
    const std::vector<const char*> arguments(values + (count > 0 ? 1 : 0), values + count);
    try {
        return Do(arguments);
    } catch (const kqu::run::StartError& error) {
        return Complain(error, error.status);
    } catch (const std::exception& error) {
        return Complain(error, wrongUsage);
    }
}

#include "post/kqu-post/CommandLine.h"
#include "post/posting/Poster.h"
#include "post/posting/StartMessenger.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

// kqu-post: posts one status notification.

namespace {
constexpr int notTaken = 1;
constexpr int wrongUsage = 2;

/// One line, whatever the arguments hold that it quotes.
int Complain(const std::exception& error, int status) {
    std::string text = error.what();
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }, '?');
    std::fprintf(stderr, "kqu-post: %s\n", text.c_str());
    return status;
}

void Post(const kqu::post::Request& request) {
    const kqu::post::Connection connection = kqu::post::Connect(request.bus);
    if (request.starts)
        kqu::post::StartMessenger(connection);
    kqu::post::Post(connection, request.notification);
}

int Run(std::span<const char* const> arguments) {
    using kqu::post::Request;
    const Request request = kqu::post::ParseCommandLine(arguments);
    switch (request.action) {
    case Request::Action::Help:
        std::fputs(kqu::post::HelpText().c_str(), stdout);
        break;
    case Request::Action::Version:
        std::puts("kqu-post " KQU_VERSION);
        break;
    case Request::Action::Post:
        Post(request);
        break;
    case Request::Action::StartOnly:
        if (!kqu::post::StartMessenger(kqu::post::Connect(request.bus)))
            throw std::runtime_error("the messenger doesn't run and can't be started");
        break;
    }
    return 0;
}
} // namespace

int main(int count, char** values) {
    const std::vector<const char*> arguments(values + (count > 0 ? 1 : 0), values + count);
    try {
        return Run(arguments);
    } catch (const kqu::post::UsageError& error) {
        return Complain(error, wrongUsage);
    } catch (const std::exception& error) {
        return Complain(error, notTaken);
    }
}

#include "post/kqu-post/CommandLine.h"
#include "post/posting/Poster.h"
#include "post/posting/Program.h"
#include "post/posting/StartMessenger.h"

#include <cstdio>
#include <stdexcept>

// kqu-post: posts one status notification.

namespace {
constexpr int notTaken = 1;
constexpr int wrongUsage = 2;

void Post(const kqu::post::Request& request) {
    const kqu::post::Connection connection = kqu::post::Connect(request.bus);
    if (request.starts)
        kqu::post::StartMessenger(connection);
    kqu::post::Post(connection, request.notification);
}

int Run(std::span<char*> arguments) {
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
    return kqu::post::RunProgram("kqu-post", {values, static_cast<std::size_t>(count)}, Run,
                                 notTaken, wrongUsage);
}

#include "post/kqu-post/CommandLine.h"
#include "post/posting/Poster.h"
#include "post/posting/Program.h"
#include "post/posting/StartMessenger.h"

// kqu-post: posts one status notification.

namespace {
constexpr int notTaken = 1;
constexpr int wrongUsage = 2;

int Run(std::span<char*> arguments) {
    using namespace kqu::post;
    const Request request = ParseCommandLine(arguments);
    const Connection connection = Connect(request.bus);
    const bool starts = request.starts || request.startsOnly;
    const bool listens = starts && StartMessenger(connection);
    if (request.startsOnly && !listens)
        throw StatusError("the messenger doesn't run and can't be started", notTaken);
    if (!request.startsOnly)
        Post(connection, request.notification);
    return 0;
}
} // namespace

int main(int count, char** values) {
    return kqu::post::RunProgram(
        {"kqu-post", KQU_VERSION, kqu::post::HelpText, Run, notTaken, wrongUsage}, count, values);
}

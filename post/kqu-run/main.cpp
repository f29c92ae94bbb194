#include "post/kqu-run/CommandLine.h"
#include "post/kqu-run/Run.h"
#include "post/posting/Program.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

// kqu-run: runs a command and shows it in the messenger's panel.

namespace {
constexpr int failed = 125;

int RunCommand(kqu::run::Request request) {
    const pid_t process = request.process;
    kqu::run::Run run(std::move(request));
    const kqu::run::Ending ending = process != 0 ? run.Follow(process) : run.Execute();
    if (ending.signal != 0)
        kqu::run::DieBy(ending.signal);
    // Threads may still wait for a bus or a disk; nobody waits for them. The first process of a
    // container outlives its own signals.
    _exit(ending.signal != 0 ? 128 + ending.signal : ending.status);
}

int Do(std::span<char*> arguments) {
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
        try {
            return RunCommand(std::move(request));
        } catch (const kqu::run::StartError& error) {
            return kqu::post::Complain("kqu-run", error.what(), error.status);
        }
    }
    return 0;
}
} // namespace

int main(int count, char** values) {
    return kqu::post::RunProgram("kqu-run", {values, static_cast<std::size_t>(count)}, Do, failed,
                                 failed);
}

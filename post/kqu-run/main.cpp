#include "post/kqu-run/CommandLine.h"
#include "post/kqu-run/Run.h"
#include "post/posting/Program.h"

#include <unistd.h>

// kqu-run: runs a command and shows it in the messenger's panel.

namespace {
constexpr int failed = 125;

int Do(std::span<char*> arguments) {
    const kqu::run::Ending ending = kqu::run::RunShown(kqu::run::ParseCommandLine(arguments));
    if (ending.signal != 0)
        kqu::run::DieBy(ending.signal);
    // Threads may still wait for a bus or a disk; nobody waits for them. The first process of a
    // container outlives its own signals.
    _exit(ending.signal != 0 ? 128 + ending.signal : ending.status);
}
} // namespace

int main(int count, char** values) {
    return kqu::post::RunProgram({"kqu-run", KQU_VERSION, kqu::run::HelpText, Do, failed, failed},
                                 count, values);
}

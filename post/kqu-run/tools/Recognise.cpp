#include "post/kqu-run/tools/Tool.h"

#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kqu::run {

namespace {
/// A command that runs the command behind its own arguments.
struct Prefix {
    std::string_view name;
    /// Its options that take a value in an argument of its own.
    std::string_view withValue;
    /// The arguments that are no options.
    std::size_t operands = 0;
    bool takesAssignments = false;
    /// It may give another user, or it closes the descriptors that it was given.
    bool isolates = false;
    /// Its options with which the command is one text for a shell, of which nothing may be posted.
    std::string_view script = {};
};

constexpr std::array<Prefix, 17> prefixes{
    {{"sudo", "u g h p C r t T U D R user group chdir", 0, true, true},
     {"doas", "u C", 0, false, true},
     {"runuser", "u g G w user group supp-group", 0, false, true, "c command"},
     {"nice", "n adjustment"},
     {"ionice", "c n class classdata"},
     {"env", "u C unset chdir", 0, true, false, "S split-string"},
     {"time", "f o format output"},
     {"stdbuf", "i o e input output error"},
     {"nohup", ""},
     {"timeout", "k s kill-after signal", 1},
     {"chrt", "T P D", 1},
     {"taskset", "", 1},
     {"setpriv",
      "reuid regid ruid euid rgid egid groups inh-caps ambient-caps bounding-set securebits "
      "pdeathsig selinux-label apparmor-profile",
      0, false, true},
     {"flock", "E w conflict-exit-code timeout wait", 1, false, false, "c command"},
     {"setsid", ""},
     {"xargs", "a d E I L n P s arg-file delimiter max-procs max-chars", 0, false, true},
     {"systemd-inhibit", "what who why mode", 0, false, true}}};

using Maker = std::unique_ptr<Tool> (*)();
constexpr std::array<std::pair<std::string_view, Maker>, 8> makers{
    {{"rsync", MakeRsync},
     {"dd", MakeDd},
     {"badblocks", MakeBadblocks},
     {"e2fsck fsck fsck.ext2 fsck.ext3 fsck.ext4", MakeE2fsck},
     {"e4defrag", MakeE4defrag},
     {"tar gtar", MakeTar},
     {"restic", MakeRestic},
     {"borg borgbackup", MakeBorg}}};

/// The entry of a table whose names hold this one.
template <class Items>
auto Find(const Items& items, std::string_view name, auto names) {
    return std::find_if(items.begin(), items.end(), [&](const auto& item) {
        const auto all = Words(item.*names);
        return std::find(all.begin(), all.end(), name) != all.end();
    });
}

/// Where the command behind the prefix begins; the arguments' end if there is none.
std::size_t Behind(const Prefix& prefix, const Launch& launch, std::size_t at) {
    const auto behind = std::span(launch.arguments).subspan(at + 1);
    Arguments arguments(std::span<const std::string>{}, prefix.withValue);
    std::size_t operands = prefix.operands;
    for (auto rest = behind; !rest.empty();) {
        const std::string& next = rest.front();
        at = launch.arguments.size() - rest.size();
        if (next == "--")
            return at + 1 + operands;
        const bool isAssignment = prefix.takesAssignments && next.find('=') != std::string::npos;
        if (arguments.Take(rest) || isAssignment)
            continue;
        if (arguments.Has(prefix.script))
            break;
        if (operands == 0)
            return at;
        --operands;
    }
    return launch.arguments.size();
}
} // namespace

std::string ToolName(const Launch& launch) {
    return LastComponent(launch.arguments[launch.tool]);
}

std::unique_ptr<Tool> Recognise(Launch& launch) {
    std::size_t at = 0;
    while (at < launch.arguments.size()) {
        const std::string name = LastComponent(launch.arguments[at]);
        if (const auto maker = Find(makers, name, &decltype(makers)::value_type::first);
            maker != makers.end()) {
            launch.tool = at;
            return launch.percentStream != 0 ? MakeCommand() : maker->second();
        }
        const auto prefix = Find(prefixes, name, &Prefix::name);
        if (prefix == prefixes.end())
            break;
        launch.isForeign = launch.isForeign || prefix->isolates;
        at = Behind(*prefix, launch, at);
    }
    launch.tool = at < launch.arguments.size() ? at : 0;
    return MakeCommand();
}

} // namespace kqu::run

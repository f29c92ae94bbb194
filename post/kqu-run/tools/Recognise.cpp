#include "post/kqu-run/tools/Recognise.h"

#include "post/kqu-run/Naming.h"

#include <algorithm>
#include <array>
#include <string_view>
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
};

constexpr std::array<Prefix, 15> prefixes{{
    {"sudo", "-u -g -h -p -C -r -t -T -U -D -R --user --group --chdir", 0, true, true},
    {"doas", "-u -C", 0, false, true},
    {"nice", "-n --adjustment", 0},
    {"ionice", "-c -n --class --classdata", 0},
    {"env", "-u -C --unset --chdir", 0, true},
    {"time", "-f -o --format --output", 0},
    {"stdbuf", "-i -o -e --input --output --error", 0},
    {"nohup", "", 0},
    {"timeout", "-k -s --kill-after --signal", 1},
    {"chrt", "-T -P -D", 1},
    {"taskset", "", 1},
    {"setpriv",
     "--reuid --regid --ruid --euid --rgid --egid --groups --inh-caps --ambient-caps "
     "--bounding-set --securebits --pdeathsig --selinux-label --apparmor-profile",
     0, false, true},
    {"flock", "-E -w --conflict-exit-code --timeout --wait", 1},
    {"setsid", "", 0},
    {"systemd-inhibit", "--what --who --why --mode", 0, false, true},
}};

using Maker = std::unique_ptr<Tool> (*)();
constexpr std::array<std::pair<std::string_view, Maker>, 14> makers{{{"rsync", MakeRsync},
                                                                     {"dd", MakeDd},
                                                                     {"badblocks", MakeBadblocks},
                                                                     {"e2fsck", MakeE2fsck},
                                                                     {"fsck", MakeE2fsck},
                                                                     {"fsck.ext2", MakeE2fsck},
                                                                     {"fsck.ext3", MakeE2fsck},
                                                                     {"fsck.ext4", MakeE2fsck},
                                                                     {"e4defrag", MakeE4defrag},
                                                                     {"tar", MakeTar},
                                                                     {"gtar", MakeTar},
                                                                     {"restic", MakeRestic},
                                                                     {"borg", MakeBorg},
                                                                     {"borgbackup", MakeBorg}}};

template <class Items>
auto Find(const Items& items, std::string_view name, auto key) {
    return std::find_if(items.begin(), items.end(),
                        [&](const auto& item) { return item.*key == name; });
}

bool IsWord(std::string_view word, std::string_view words) {
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (words.substr(0, end) == word)
            return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

/// Whether the option's value is the next argument: "-u", or "-nu", but not "-uroot".
bool TakesNext(const std::string& option, std::string_view withValue) {
    if (option.starts_with("--"))
        return IsWord(option, withValue);
    for (std::size_t i = 1; i < option.size(); ++i)
        if (IsWord(std::string("-") + option[i], withValue))
            return i + 1 == option.size();
    return false;
}

/// Where the command behind the prefix begins; the arguments' end if there is none.
std::size_t Behind(const Prefix& prefix, const std::vector<std::string>& arguments,
                   std::size_t at) {
    std::size_t operands = prefix.operands;
    for (++at; at < arguments.size(); ++at) {
        const std::string& argument = arguments[at];
        if (argument == "--")
            return at + 1 + operands;
        if (argument.starts_with("-") && argument.size() > 1)
            at += TakesNext(argument, prefix.withValue) ? 1U : 0U;
        else if (prefix.takesAssignments && argument.find('=') != std::string::npos)
            continue;
        else if (operands > 0)
            --operands;
        else
            return at;
    }
    return at;
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
            return maker->second();
        }
        const auto prefix = Find(prefixes, name, &Prefix::name);
        if (prefix == prefixes.end())
            break;
        launch.isForeign = launch.isForeign || prefix->isolates;
        at = Behind(*prefix, launch.arguments, at);
    }
    return MakeCommand(at < launch.arguments.size() ? at : 0);
}

} // namespace kqu::run

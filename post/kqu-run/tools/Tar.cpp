#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Tool.h"

#include <filesystem>
#include <unistd.h>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

constexpr std::string_view withValue =
    "b C f F g I K L N T V X H add-file after-date blocking-factor checkpoint-action directory "
    "exclude exclude-from exclude-ignore exclude-ignore-recursive exclude-tag exclude-tag-all "
    "exclude-tag-under file files-from format group group-map hole-detection index-file "
    "info-script label level listed-incremental mode mtime newer newer-mtime new-volume-script "
    "no-quote-chars owner owner-map pax-option quote-chars quoting-style record-size rmt-command "
    "rsh-command sort starting-file strip-components suffix tape-length to-command sparse-version "
    "transform use-compress-program volno-file warning xform xattrs-include xattrs-exclude";
constexpr std::string_view leavesOut =
    "X T N K g exclude exclude-from exclude-vcs exclude-caches exclude-tag exclude-backups "
    "files-from newer newer-mtime after-date starting-file listed-incremental exclude-vcs-ignores "
    "exclude-ignore exclude-caches-all exclude-tag-all exclude-caches-under "
    "exclude-ignore-recursive exclude-tag-under no-recursion u update";

/// Reading an archive it is as far as it is in the archive; making one it is as far as it has read
/// of the files that go into it.
class Tar : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(WithDash(launch), withValue);
        const std::string archive = arguments.Value("f file").value_or("-");
        const std::string folder = arguments.Value("C directory").value_or(".");
        const bool isFile = !IsElsewhere(archive) && archive != "-";
        row_.folder = true;
        if (!arguments.Has("c create r append u update")) {
            row_.volume = archive == "-" ? OpenName("archive")
                          : isFile       ? Name{LastComponent(archive), {}}
                                         : Destination(archive);
            row_.destination = LocalDestination(folder);
            return;
        }
        row_.image = true;
        row_.destination = archive == "-" ? OpenName("standard output") : Destination(archive);
        std::error_code failure;
        archive_ = files::weakly_canonical(files::absolute(archive, failure), failure);
        std::vector<std::string> sources;
        for (const std::string& operand : arguments.Operands())
            sources.push_back(files::absolute(folder / files::path(operand)).lexically_normal());
        NameSources(sources);
        // tar doesn't read files whose archive nobody gets.
        work_.isKnown = archive_ != "/dev/null";
        if (work_.isKnown && !arguments.Has(leavesOut))
            work_.trees = sources;
        work_.staysOnVolume = arguments.Has("one-file-system");
    }

    void Look(pid_t process, bool isRead) override {
        Tool::Look(process, isRead);
        const auto open = OpenFilesOf(process);
        // The file in work is the one that was opened last, behind the folders that it is in.
        if (row_.image && !open.empty() && open.back().descriptor > STDERR_FILENO &&
            open.back().path != archive_ && !open.back().path.starts_with("/dev/"))
            progress_.file = LastComponent(open.back().path);
    }

  private:
    /// The first argument may be a cluster of options without a dash; their values follow it in
    /// the order of the letters.
    static std::vector<std::string> WithDash(const Launch& launch) {
        std::vector<std::string> rest(launch.arguments.begin() + static_cast<long>(launch.tool) + 1,
                                      launch.arguments.end());
        if (rest.empty() || rest.front().starts_with("-"))
            return rest;
        std::vector<std::string> whole;
        std::size_t next = 1;
        for (const char letter : rest.front()) {
            whole.push_back({'-', letter});
            if (std::string_view("bCfFgIKLNTVXH").find(letter) != std::string::npos &&
                next < rest.size())
                whole.push_back(rest[next++]);
        }
        whole.insert(whole.end(), rest.begin() + static_cast<long>(next), rest.end());
        return whole;
    }

    std::string archive_;
};
} // namespace

std::unique_ptr<Tool> MakeTar() {
    return std::make_unique<Tar>();
}

} // namespace kqu::run

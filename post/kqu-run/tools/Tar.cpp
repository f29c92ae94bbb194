#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/TreeSize.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <filesystem>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

constexpr std::string_view withValue =
    "b C f F g I K L N T V X H add-file after-date blocking-factor checkpoint-action directory "
    "exclude exclude-from exclude-ignore exclude-ignore-recursive exclude-tag exclude-tag-all "
    "exclude-tag-under file files-from format group group-map hole-detection index-file "
    "info-script label level "
    "listed-incremental mode mtime newer newer-mtime new-volume-script no-quote-chars owner "
    "owner-map pax-option quote-chars quoting-style record-size "
    "rmt-command rsh-command sort starting-file strip-components suffix tape-length to-command "
    "sparse-version transform use-compress-program volno-file warning xform xattrs-include "
    "xattrs-exclude";
constexpr std::string_view leavesOut =
    "X T N K g exclude exclude-from exclude-vcs exclude-caches exclude-tag exclude-backups "
    "files-from newer newer-mtime after-date starting-file listed-incremental "
    "exclude-vcs-ignores exclude-ignore exclude-caches-all exclude-tag-all "
    "exclude-caches-under exclude-ignore-recursive exclude-tag-under";

std::string Absolute(const std::string& path, const std::string& folder) {
    std::error_code failure;
    return files::absolute(files::path(folder) / path, failure).lexically_normal().string();
}

/// The path by which the kernel tells of the file, whatever links lead to it.
std::string Opened(const std::string& path) {
    std::error_code failure;
    return files::weakly_canonical(Absolute(path, "."), failure).string();
}

/// tar needn't be asked. Reading an archive it is as far as it is in the archive; making one it is
/// as far as it has read of the files that go into it.
class Tar : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(WithDash(launch), withValue);
        const std::string archive = arguments.Value("f file").value_or("-");
        folder_ = arguments.Value("C directory").value_or(".");
        creates_ = arguments.Has("c create r append u update");
        reads_ = !creates_ && arguments.Has("x extract get t list d diff compare");
        row_.folder = true;
        if (!IsElsewhere(archive) && archive != "-")
            archive_ = Opened(archive);
        creates_ ? PrepareCreate(arguments, archive) : PrepareRead(archive);
    }

    void Look(pid_t process) override { reads_ ? LookAtArchive(process) : LookAtFiles(process); }

  private:
    /// The first argument may be a cluster of options without a dash; their values follow it in
    /// the order of the letters.
    static std::vector<std::string> WithDash(const Launch& launch) {
        std::vector<std::string> arguments(
            launch.arguments.begin() + static_cast<long>(launch.tool) + 1, launch.arguments.end());
        if (arguments.empty() || arguments.front().starts_with("-"))
            return arguments;
        const std::string cluster = arguments.front();
        arguments.erase(arguments.begin());
        std::vector<std::string> whole;
        for (const char letter : cluster) {
            whole.push_back({'-', letter});
            const bool takesValue =
                std::string_view("bCfFgIKLNTVXH").find(letter) != std::string::npos;
            if (takesValue && !arguments.empty()) {
                whole.push_back(arguments.front());
                arguments.erase(arguments.begin());
            }
        }
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        return whole;
    }

    void PrepareCreate(const Arguments& arguments, const std::string& archive) {
        row_.image = true;
        row_.destination = archive == "-"     ? OpenName("standard output")
                           : archive_.empty() ? Destination(archive)
                                              : LocalDestination(archive);
        for (const std::string& operand : arguments.Operands())
            sources_.push_back(Absolute(operand, folder_));
        row_.volume = FolderNames(sources_);
        if (const auto volume = VolumeOfFile(sources_.empty() ? folder_ : sources_.front()))
            row_.disk = volume->disk;
        isCountable_ = !arguments.Has(leavesOut) && archive_ != "/dev/null";
        staysOnVolume_ = arguments.Has("one-file-system");
    }

    void PrepareRead(const std::string& archive) {
        row_.volume = archive == "-"     ? OpenName("archive")
                      : archive_.empty() ? Destination(archive)
                                         : Name{LastComponent(archive), {}};
        row_.destination = LocalDestination(folder_);
        size_ = SizeOf(archive_).value_or(0);
    }

    /// An archive that is packed is open in the process that unpacks it.
    void LookAtArchive(pid_t process) {
        std::uint64_t read = 0;
        for (const pid_t one : Family(process))
            for (const OpenFile& file : OpenFilesOf(one))
                if (file.path == archive_)
                    read = std::max(read, PositionOf(one, file.descriptor).value_or(0));
        if (read == 0 || size_ == 0)
            return;
        Report(read, size_);
    }

    void LookAtFiles(pid_t process) {
        if (isCountable_ && !sources_.empty() && !total_)
            total_.emplace(sources_, staysOnVolume_);
        const auto files = OpenFilesOf(process);
        // The file in work is the one that was opened last, behind the folders that it is in.
        if (!files.empty() && files.back().descriptor > STDERR_FILENO &&
            files.back().path != archive_ && !files.back().path.starts_with("/dev/"))
            progress_.file = files.back().path;
        const auto read = BytesReadBy(process);
        const auto all = total_ ? total_->Bytes() : std::nullopt;
        if (read && all && *all > 0)
            Report(std::min(*read, *all), *all);
    }

    void Report(std::uint64_t done, std::uint64_t whole) {
        progress_.done = static_cast<double>(done);
        progress_.whole = static_cast<double>(whole);
        progress_.share = Share(*progress_.done, *progress_.whole);
    }

    std::string archive_, folder_;
    std::vector<std::string> sources_;
    bool creates_ = false, reads_ = false, isCountable_ = false, staysOnVolume_ = false;
    std::uint64_t size_ = 0;
    std::optional<TreeSize> total_;
};
} // namespace

std::unique_ptr<Tool> MakeTar() {
    return std::make_unique<Tar>();
}

} // namespace kqu::run

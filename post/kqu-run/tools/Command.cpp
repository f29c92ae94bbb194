#include "post/kqu-run/Activity.h"
#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
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

/// Commands whose first words say what they do. Of any other command no word is posted but names of
/// files that exist, since it may be a password, and others can read it.
constexpr std::string_view withSubcommand =
    "bcachefs borg borgbackup btrfs restic rclone zfs zpool snapper";
constexpr std::string_view subcommands =
    "backup balance check checksum copy create defragment device filesystem move prune receive "
    "replace resilver restore scrub send start sync verify";
constexpr std::string_view scans = "check checksum cmp scrub verify xfs_repair ntfsfix";
constexpr std::string_view scanParts = "fsck scrub check";
constexpr std::string_view defragmentations = "balance defragment xfs_fsr";
/// The last operand is where they write to.
constexpr std::string_view copies = "cp mv ddrescue install";

bool IsIn(std::string_view word, std::string_view words) {
    const auto all = Words(words);
    return std::find(all.begin(), all.end(), word) != all.end();
}

/// Any command: its name, what it does and its operands, and how far it is by the kernel.
class Command : public Tool {
  public:
    explicit Command(std::size_t program) : program_(program) {}

    void Prepare(Launch& launch) override {
        name_ = LastComponent(launch.arguments[program_]);
        std::vector<std::string> words{name_};
        std::size_t at = program_ + 1;
        while (IsIn(name_, withSubcommand) && at < launch.arguments.size() &&
               IsIn(launch.arguments[at], subcommands))
            words.push_back(launch.arguments[at++]);
        std::error_code failure;
        for (; at < launch.arguments.size(); ++at)
            if (!launch.arguments[at].starts_with('-') &&
                files::exists(launch.arguments[at], failure))
                operands_.push_back(launch.arguments[at]);
        if (IsIn(name_, copies) && launch.arguments.size() > program_ + 2) {
            row_.destination = LocalDestination(launch.arguments.back());
            if (!operands_.empty() && operands_.back() == launch.arguments.back())
                operands_.pop_back();
        }
        NameRow(words);
        launch.stream = launch.percentStream;
    }

    /// Of what any command prints, the percentage that comes last.
    void Read(std::string_view line) override {
        if (const auto share = LastPercentage(line); share && *share <= 1)
            progress_.share = share;
    }

    void Look(pid_t process) override {
        if (IsIn(name_, "cp mv") && hasFolder_)
            LookAtTree(process);
        else
            activity_.Look(process, progress_);
        if (!progress_.done)
            return;
        // The first line holds the name already.
        progress_.text.clear();
        progress_.file = LastComponent(progress_.file);
    }

  private:
    void NameRow(const std::vector<std::string>& words) {
        std::string name;
        bool isScan = name_.ends_with("sum"),
             isDefragmentation = name_.find("defrag") != name_.npos;
        for (const std::string& word : words) {
            name += (name.empty() ? "" : " ") + word;
            isScan = isScan || IsIn(word, scans);
            isDefragmentation = isDefragmentation || IsIn(word, defragmentations);
        }
        for (const std::string_view part : Words(scanParts))
            isScan = isScan || name_.find(part) != name_.npos;
        row_.tool = post::FindTool(isDefragmentation ? "defragmenter"
                                   : isScan          ? "scanner"
                                                     : "backup");
        row_.volume = OpenName(name);
        progress_.text = name;
        const Name places = FolderNames(operands_);
        if (!places.full.empty()) {
            row_.volume.full += " " + places.full;
            progress_.file = Joined(operands_);
        }
        if (const auto volume = operands_.empty() ? std::nullopt : VolumeOfFile(operands_.front()))
            row_.disk = volume->disk;
        // The panel names a defragmenter's volume after its disk, which may be none.
        if (isDefragmentation && row_.disk.empty())
            row_.disk = name;
        for (const std::string& operand : operands_)
            hasFolder_ = hasFolder_ || files::is_directory(operand);
    }

    /// What a copy of whole folders has read, of what is in them.
    void LookAtTree(pid_t process) {
        if (!total_)
            total_.emplace(operands_, false);
        const auto read = BytesReadBy(process);
        const auto whole = total_->Bytes();
        if (!read || !whole || *whole == 0)
            return;
        progress_.done = static_cast<double>(std::min(*read, *whole));
        progress_.whole = static_cast<double>(*whole);
        progress_.share = Share(*progress_.done, *progress_.whole);
        progress_.file = Joined(operands_);
    }

    std::size_t program_;
    std::string name_;
    std::vector<std::string> operands_;
    bool hasFolder_ = false;
    Activity activity_;
    std::optional<TreeSize> total_;
};
} // namespace

std::unique_ptr<Tool> MakeCommand(std::size_t program) {
    return std::make_unique<Command>(program);
}

} // namespace kqu::run

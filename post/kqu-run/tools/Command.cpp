#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

/// What is known of a command beside what the kernel reports.
struct Known {
    std::string_view name;
    /// Its options that take a value in an argument of their own, or those that take none, where
    /// they are fewer.
    std::string_view options = {};
    /// Which of its operands, counted from 1, it writes to; -1 for the last.
    int destination = 0;
    /// What of its output is read: the stream, the option without which it prints nothing, and the
    /// pattern, whose group is a percentage or a text.
    int stream = 0;
    std::string_view onlyWith = {};
    const char* share = nullptr;
    const char* text = nullptr;
    Arguments::Listed listed = Arguments::Listed::HasValue;
};

constexpr std::string_view ofCopies = "S t g m o suffix target-directory group mode owner";
constexpr std::array<Known, 11> known{
    {{"cp", ofCopies, -1},
     {"mv", ofCopies, -1},
     {"install", ofCopies, -1},
     {"shred", "n s iterations size random-source"},
     {"fstrim", "I l m o t listed-in length minimum offset types"},
     {"xfs_fsr", "f m p t"},
     {"xfs_repair", "c l m o r t", 0, 2, "", nullptr, "^(Phase [0-9].*)"},
     {"ddrescue",
      "A B C d D f h I J L M n N O p P q R S t u v V w W y ask binary-prefixes complete-only force "
      "idirect no-scrape no-trim odirect preallocate quiet reverse sparse synchronous try-again "
      "verbose",
      2, 1, "", "pct rescued: +([0-9.]+%)", nullptr, Arguments::Listed::HasNoValue},
     {"rclone",
      "c i n P q u v checksum create-empty-src-dirs delete-after delete-before delete-during "
      "dry-run fast-list ignore-existing ignore-times immutable inplace interactive metadata "
      "no-traverse one-way progress quiet size-only track-renames update use-json-log verbose",
      -1, 1, "P progress", "^Transferred: .*, ([0-9]+%), .*ETA", nullptr,
      Arguments::Listed::HasNoValue},
     {"mdadm", "c e l n s x z"},
     {"su", "c g G s w command group shell supp-group"}}};

/// Words behind a command's name that say what it does. Of any other command no word is posted but
/// names of files that exist, since it may be a password, and others can read it.
constexpr const char* subcommands =
    "^((bcachefs|btrfs|rclone|snapper|zfs|zpool) (backup|balance|bisync|check|checksum|copy|"
    "copyto|create|cryptcheck|defragment|delete|device|filesystem|move|moveto|prune|receive|"
    "replace|resilver|restore|resume|scrub|send|start|sync|verify)|"
    "mdadm (--wait|-W|--grow|-G|--create|-C|--action=[a-z]+))$";
constexpr const char* scans = "fsck|scrub|check|verify|^cmp|sum$|^mdadm|xfs_repair|ntfsfix";
constexpr const char* defragmentations = "defrag|balance|xfs_fsr";

/// Any command: its name, what it does and its operands, and how far it is by the kernel.
class Command : public Tool {
  public:
    void Prepare(Launch& launch) override {
        name_ = LastComponent(launch.arguments[launch.tool]);
        const auto* const entry = std::ranges::find(known, name_, &Known::name);
        const Known knows = entry != known.end() ? *entry : Known{};
        const Arguments arguments(launch, knows.options, knows.listed);
        FindOperands(launch, arguments);
        if (knows.destination != 0)
            TakeDestination(arguments, knows.destination);
        NameRow();
        FindWork(arguments);
        const bool prints = knows.onlyWith.empty() || arguments.Has(knows.onlyWith);
        launch.stream = launch.percentStream != 0 ? launch.percentStream
                        : prints                  ? knows.stream
                                                  : 0;
        if (launch.percentStream != 0)
            share_.emplace("^(.*)$");
        else if (knows.share != nullptr)
            share_.emplace(knows.share);
        if (knows.text != nullptr)
            text_.emplace(knows.text);
    }

    void Read(std::string_view line) override {
        using Groups = std::vector<std::string_view>;
        const Groups share = share_ ? share_->In(line) : Groups{};
        const Groups text = text_ ? text_->In(line) : Groups{};
        if (const auto read = share.empty() ? std::nullopt : LastPercentage(share[1]);
            read && *read <= 1)
            progress_.share = read;
        if (!text.empty())
            progress_.text = text[1];
    }

    void Look(pid_t process, bool isRead) override {
        if (name_.starts_with("mdadm") || name_.starts_with("mdcheck"))
            ReadArrays();
        else
            Tool::Look(process, isRead);
        if (!progress_.done)
            return;
        // The first line holds the name already.
        progress_.text.clear();
        progress_.file = LastComponent(progress_.file);
    }

  private:
    void FindOperands(const Launch& launch, const Arguments& arguments) {
        static const Pattern isSubcommand(subcommands);
        title_ = name_;
        for (const std::string& word : std::span(launch.arguments).subspan(launch.tool + 1)) {
            if (!isSubcommand.In(name_ + " " + word).empty())
                title_ += " " + word;
            else if (!word.starts_with("-"))
                break;
        }
        std::error_code failure;
        for (const std::string& operand : arguments.Operands())
            if (files::exists(operand, failure))
                operands_.push_back(operand);
    }

    void TakeDestination(const Arguments& arguments, int which) {
        const std::vector<std::string>& all = arguments.Operands();
        const auto at = which < 0 ? all.size() - 1 : static_cast<std::size_t>(which - 1);
        const auto folder = arguments.Value("t target-directory");
        // Behind rclone's subcommand: one that only reads or removes has a single place.
        if (all.size() < (name_ == "rclone" ? 3U : 2U) && !folder)
            return;
        const std::string place = folder ? *folder : all[std::min(at, all.size() - 1)];
        row_.destination = Destination(place);
        operands_.erase(std::remove(operands_.begin(), operands_.end(), place), operands_.end());
    }

    void NameRow() {
        const bool isDefragmentation = !Pattern(defragmentations).In(title_).empty();
        const bool isScan = !isDefragmentation && !Pattern(scans).In(title_).empty();
        row_.tool = post::FindTool(isDefragmentation ? "defragmenter"
                                   : isScan          ? "scanner"
                                                     : "backup");
        std::vector<std::string> shown;
        for (const std::string& operand : operands_)
            shown.push_back(FolderName(operand).full);
        row_.volume = OpenName(title_);
        progress_.text = title_;
        if (!operands_.empty()) {
            row_.volume.full.append(" ").append(Joined(shown));
            progress_.file = Joined(operands_);
            auto volume = VolumeOfDisk(operands_.front());
            volume = volume && !volume->disk.empty() ? volume : VolumeOfFile(operands_.front());
            row_.disk = volume ? volume->disk : "";
        }
        // The panel names a defragmenter's volume after its disk, which may be none.
        if (isDefragmentation && row_.disk.empty())
            row_.disk = title_;
    }

    /// Copies of whole folders, and what is written over and over.
    void FindWork(const Arguments& arguments) {
        const bool hasFolder = std::ranges::any_of(
            operands_, [](const auto& path) { return files::is_directory(path); });
        if ((name_ == "cp" || name_ == "mv") && hasFolder)
            work_ = {true, true, false, 0, operands_, false, 1};
        if (name_ != "shred" || operands_.size() != 1)
            return;
        const double size = static_cast<double>(SizeOf(operands_[0]).value_or(0));
        const double passes = Count(arguments.Value("n iterations").value_or("3"));
        work_ = {true, false, true, size, {}, false, passes + (arguments.Has("z zero") ? 1 : 0)};
    }

    /// "[==>......]  recovery = 12.6% (37043392/292945152) finish=127.5min speed=33440K/sec": what
    /// the kernel does with an array of disks.
    void ReadArrays() {
        static const Pattern doing("\\] +([a-z]+) = +([0-9.]+%)");
        std::ifstream arrays("/proc/mdstat");
        for (std::string line; std::getline(arrays, line);)
            if (const auto parts = doing.In(line); !parts.empty()) {
                progress_.text = parts[1];
                progress_.share = LastPercentage(parts[2]);
            }
    }

    std::string name_, title_;
    std::vector<std::string> operands_;
    std::optional<Pattern> share_, text_;
};
} // namespace

std::unique_ptr<Tool> MakeCommand() {
    return std::make_unique<Command>();
}

} // namespace kqu::run

#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <array>
#include <sys/mman.h>

namespace kqu::run {

/// The tools of the ext file systems: badblocks, e2fsck and e4defrag.
namespace {
constexpr std::uint64_t usualBlock = 1024;

/// The kernel reports how much it has read and written; where it does not, -s does.
class Badblocks : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, "b c d e i o p t");
        const std::vector<std::string>& operands = arguments.Operands();
        row_.tool = post::FindTool("scanner");
        row_.sectors = true;
        if (operands.empty())
            return;
        NameDisk(operands[0]);
        const auto number = [](const auto& text, std::uint64_t usual) {
            return text ? DdSize(*text).value_or(usual) : usual;
        };
        const std::uint64_t block =
            std::max<std::uint64_t>(number(arguments.Value("b"), usualBlock), 1);
        const auto operand = [&](std::size_t at, std::uint64_t usual) {
            return at < operands.size() ? DdSize(operands[at]).value_or(usual) : usual;
        };
        const std::uint64_t last = operand(1, SizeOf(operands[0]).value_or(0) / block);
        const std::uint64_t first = std::min(operand(2, 0), last);
        work_ = {true, true, true, static_cast<double>((last - first) * block), {}, false, 1};
        // What is written is read again, for each pattern. The test that leaves the data as it is
        // reads and writes twice. -p begins again until it has found nothing new so many times.
        const bool writes = arguments.Has("w");
        const std::uint64_t given = arguments.Count("t");
        const std::uint64_t patterns = given > 0 ? given : writes ? 4 : 1;
        const std::uint64_t repeats =
            std::clamp<std::uint64_t>(number(arguments.Value("p"), 1), 1, 1000);
        ownPasses_ = static_cast<double>(patterns * repeats * (writes ? 2 : 1));
        work_.passes = ownPasses_ * (arguments.Has("n") ? 4 : 1);
        if (arguments.Has("s"))
            launch.stream = 2;
    }

    /// "Checking for bad blocks (read-only test):  12.50% done, 0:05 elapsed. (0/0/0 errors)". Each
    /// pass begins at 0 again; the test that leaves the data as it is goes back a little.
    void Read(std::string_view line) override {
        const std::size_t at = line.find("% done");
        const auto share = at == line.npos ? std::nullopt : LastPercentage(line.substr(0, at + 1));
        if (!share || isMeasured_)
            return;
        if (*share < inPass_ - 0.5 && pass_ + 1 < ownPasses_)
            ++pass_;
        inPass_ = std::min(*share, 1.0);
        progress_.share = (pass_ + inPass_) / ownPasses_;
    }

  private:
    double ownPasses_ = 1, pass_ = 0, inPass_ = 0;
};

struct Pass {
    std::string_view what;
    /// How much of the whole is done when it begins, as e2fsck itself reckons for its own bar.
    double begins;
};
constexpr std::array<Pass, 6> passes{{{"inodes, blocks and sizes", 0.00},
                                      {"directory structure", 0.70},
                                      {"directory connectivity", 0.90},
                                      {"reference counts", 0.92},
                                      {"group summaries", 0.95},
                                      {"", 1.00}}};

/// It writes its progress to any descriptor. Ours is a file in memory and no pipe, so that a repair
/// neither waits nor dies if nobody reads any more.
class E2fsck : public Tool {
  public:
    void Prepare(Launch& launch) override {
        // fsck runs the checker of each file system, and hands the descriptor of -C on.
        const Arguments arguments(launch, ToolName(launch) == "fsck" ? "t" : "b B C E j l L P z");
        row_.tool = post::FindTool("scanner");
        if (!arguments.Operands().empty())
            NameDisk(arguments.Operands().front());
        if (arguments.Has("C"))
            launch.stream = arguments.Value("C") == "0" ? 1 : 0;
        else if (!row_.volume.full.empty() && !launch.isForeign)
            OpenChannel(launch);
    }

    /// "2 17 130 Data": pass, how far, of how many; or a bar with a percentage.
    void Read(std::string_view line) override {
        static const Pattern counted("^([1-5]) ([0-9]+) ([0-9]+)");
        const auto parts = counted.In(line);
        if (parts.empty()) {
            if (const auto share = LastPercentage(line); share && line.find('|') != line.npos)
                progress_.share = share;
            return;
        }
        const auto pass = static_cast<std::size_t>(parts[1][0] - '0');
        const Pass& current = passes[pass - 1];
        const double inPass = Share(Count(parts[2]), Count(parts[3])).value_or(0);
        progress_.share = current.begins + inPass * (passes[pass].begins - current.begins);
        progress_.text = "Pass " + std::string(parts[1]) + " of 5: " + std::string(current.what);
    }

  private:
    static void OpenChannel(Launch& launch) {
        launch.channel = memfd_create("progress", MFD_CLOEXEC);
        if (launch.channel < 0)
            return;
        const auto behindName = launch.arguments.begin() + static_cast<long>(launch.tool) + 1;
        launch.arguments.insert(behindName, {"-C", std::to_string(launch.channel)});
    }
};

class E4defrag : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, "");
        row_.tool = post::FindTool("defragmenter");
        progress_.checking = arguments.Has("c");
        launch.stream = 1;
        if (arguments.Operands().empty())
            return;
        progress_.file = arguments.Operands().front();
        targets_ = static_cast<double>(arguments.Operands().size());
        auto volume = VolumeOfDisk(progress_.file);
        if (!volume || volume->disk.empty())
            volume = VolumeOfFile(progress_.file);
        if (!volume)
            return;
        row_.disk = volume->disk;
        row_.volume = volume->Shown();
        row_.filesInUse = volume->filesInUse;
    }

    /// "[35/37]/mnt/data/big:	 16%", with the number in brackets alone before it.
    void Read(std::string_view line) override {
        static const Pattern place("^\\[([0-9]+)/([0-9]+)\\](.*:\t([^%]*%)?)?");
        target_ += line.starts_with("ext4 defragmentation for ") ? 1 : 0;
        const auto parts = place.In(line);
        if (parts.empty())
            return;
        const auto ofTarget = Share(Count(parts[1]), Count(parts[2]));
        progress_.share = Share(std::max(target_ - 1, 0.0) + ofTarget.value_or(0), targets_);
        progress_.text = std::string(parts[1]) + " of " + std::string(parts[2]);
        if (parts[3].empty())
            return;
        progress_.file = parts[3].substr(0, parts[3].rfind(":\t"));
        progress_.fileShare = LastPercentage(parts[4]);
    }

  private:
    /// Each of the targets is counted from 1 again.
    double targets_ = 1, target_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeBadblocks() {
    return std::make_unique<Badblocks>();
}

std::unique_ptr<Tool> MakeE2fsck() {
    return std::make_unique<E2fsck>();
}

std::unique_ptr<Tool> MakeE4defrag() {
    return std::make_unique<E4defrag>();
}

} // namespace kqu::run

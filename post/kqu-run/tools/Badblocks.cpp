#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <cmath>

namespace kqu::run {

namespace {
constexpr std::string_view withValue = "b c d e i o p t";
constexpr std::uint64_t usualBlock = 1024;
constexpr std::uint64_t usualPatterns = 4;
constexpr std::uint64_t mostRepeats = 1000;

/// The kernel reports how much it has read and written; where it does not, -s does.
class Badblocks : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, withValue);
        const std::vector<std::string>& operands = arguments.Operands();
        row_.tool = post::FindTool("scanner");
        row_.sectors = true;
        if (operands.empty())
            return;
        device_ = operands[0];
        if (const auto disk = VolumeOfDisk(device_)) {
            row_.volume = disk->Shown();
            row_.disk = disk->disk;
        }
        block_ = DdSize(arguments.Value("b").value_or("")).value_or(usualBlock);
        block_ = std::max<std::uint64_t>(block_, 1);
        phases_ = Phases(arguments);
        // The test that leaves the data as it is reads and writes twice for each pattern.
        transfers_ = phases_ * (arguments.Has("n") ? 4 : 1);
        SetRange(operands);
        if (arguments.Has("s"))
            launch.stream = 2;
    }

    /// "Checking for bad blocks (read-only test):  12.50% done, 0:05 elapsed. (0/0/0 errors)". Each
    /// phase begins at 0 again.
    void Read(std::string_view line) override {
        const std::size_t at = line.find("% done");
        if (at == std::string_view::npos || isSeen_)
            return;
        if (const auto share = LastPercentage(line.substr(0, at + 1)))
            Tell(*share);
    }

    /// All that is read and written, of all that will be: phases may change unseen between two
    /// looks.
    void Look(pid_t process) override {
        const auto moved = BytesMovedBy(process);
        const double whole = static_cast<double>((last_ - std::min(first_, last_)) * block_) *
                             static_cast<double>(transfers_);
        if (!moved || whole == 0)
            return;
        isSeen_ = true;
        const double share = std::min(static_cast<double>(*moved) / whole, 1.0);
        progress_.share = share;
        Say(std::fmod(share * static_cast<double>(phases_), 1.0));
    }

  private:
    static std::uint64_t Phases(const Arguments& arguments) {
        const bool writes = arguments.Has("w");
        const std::uint64_t given = arguments.Count("t");
        const std::uint64_t patterns = given > 0 ? given : writes ? usualPatterns : 1;
        // It goes on until it has found nothing new so many times; if it finds nothing, these are
        // all.
        const std::uint64_t repeats = DdSize(arguments.Value("p").value_or("")).value_or(1);
        // What is written is read again, for each pattern.
        return patterns * (writes ? 2 : 1) * std::clamp<std::uint64_t>(repeats, 1, mostRepeats);
    }

    void SetRange(const std::vector<std::string>& operands) {
        last_ = SizeOf(device_).value_or(0) / block_;
        if (operands.size() > 1)
            last_ = DdSize(operands[1]).value_or(last_);
        if (operands.size() > 2)
            first_ = DdSize(operands[2]).value_or(0);
    }

    void Tell(double share) {
        share = std::min(share, 1.0);
        // Going back a little is how the test that leaves the data as it is works.
        constexpr double far = 0.5;
        if (share < inPhase_ - far && phase_ + 1 < phases_)
            ++phase_;
        inPhase_ = share;
        progress_.share = (static_cast<double>(phase_) + share) / static_cast<double>(phases_);
        Say(share);
    }

    /// The block that is at that share of a phase.
    void Say(double share) {
        if (last_ <= first_)
            return;
        const auto size = static_cast<double>(last_ - first_);
        progress_.text = std::to_string(first_ + static_cast<std::uint64_t>(share * size)) +
                         " of " + std::to_string(last_);
    }

    std::string device_;
    bool isSeen_ = false;
    std::uint64_t transfers_ = 1;
    std::uint64_t block_ = usualBlock, first_ = 0, last_ = 0;
    std::uint64_t phases_ = 1, phase_ = 0;
    double inPhase_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeBadblocks() {
    return std::make_unique<Badblocks>();
}

} // namespace kqu::run

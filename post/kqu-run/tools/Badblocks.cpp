#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>

namespace kqu::run {

namespace {
constexpr std::string_view withValue = "b c d e i o p t";
constexpr std::uint64_t usualBlock = 1024;
constexpr int usualPatterns = 4;

/// With -s it tells how far it is; without, the kernel tells where on the disk it is.
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
            row_.volume = disk->name;
            row_.disk = disk->disk;
        }
        block_ = DdSize(arguments.Value("b").value_or("")).value_or(usualBlock);
        // What is written is read again, for each pattern.
        patterns_ = arguments.Has("t") ? 1 : usualPatterns;
        phases_ = arguments.Has("w") ? 2 * patterns_ : 1;
        SetRange(operands);
        if (arguments.Has("s"))
            launch.stream = 2;
    }

    /// "Checking for bad blocks (read-only test):  12.50% done, 0:05 elapsed. (0/0/0 errors)". Each
    /// phase begins at 0 again.
    void Read(std::string_view line) override {
        const std::size_t at = line.find("% done");
        if (at == std::string_view::npos)
            return;
        if (const auto share = LastPercentage(line.substr(0, at + 1)))
            Tell(*share);
    }

    void Look(pid_t process) override {
        if (disk_ < 0)
            for (const OpenFile& file : OpenFilesOf(process))
                if (LastComponent(file.path) == LastComponent(device_))
                    disk_ = file.descriptor;
        const auto position = disk_ >= 0 ? PositionOf(process, disk_) : std::nullopt;
        const std::uint64_t block = position.value_or(0) / block_;
        if (block >= first_ && block > 0 && last_ > first_)
            Tell(static_cast<double>(block - first_) / static_cast<double>(last_ - first_));
    }

  private:
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
        progress_.share = (phase_ + share) / phases_;
        const auto size = static_cast<double>(last_ - first_);
        progress_.text = std::to_string(first_ + static_cast<std::uint64_t>(share * size)) +
                         " of " + std::to_string(last_);
    }

    std::string device_;
    std::uint64_t block_ = usualBlock, first_ = 0, last_ = 0;
    int disk_ = -1;
    int patterns_ = 1, phases_ = 1, phase_ = 0;
    double inPhase_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeBadblocks() {
    return std::make_unique<Badblocks>();
}

} // namespace kqu::run

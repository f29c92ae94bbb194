#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>

namespace kqu::run {

namespace {
class E4defrag : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, "");
        row_.tool = post::FindTool("defragmenter");
        progress_.checking = arguments.Has("c");
        if (!arguments.Operands().empty()) {
            const std::string& target = arguments.Operands().front();
            auto volume = VolumeOfDisk(target);
            if (!volume || volume->disk.empty())
                volume = VolumeOfFile(target);
            if (volume) {
                row_.disk = volume->disk;
                row_.volume = volume->Shown();
                row_.filesInUse = volume->filesInUse;
            }
            progress_.file = target;
        }
        targets_ = std::max<std::size_t>(1, arguments.Operands().size());
        launch.stream = 1;
    }

    /// "[35/37]/mnt/data/big:	 16%", with the number in brackets alone before it.
    void Read(std::string_view line) override {
        if (line.starts_with("ext4 defragmentation for "))
            ++target_;
        if (!TakeMark(line, "["))
            return;
        const auto done = TakeNumber(line);
        const bool isDivided = TakeMark(line, "/");
        const auto all = TakeNumber(line);
        if (!done || !isDivided || !all || !TakeMark(line, "]"))
            return;
        const double before = target_ > 1 ? static_cast<double>(target_ - 1) : 0;
        const auto ofTarget = Share(static_cast<double>(*done), static_cast<double>(*all));
        progress_.share = Share(before + ofTarget.value_or(0), static_cast<double>(targets_));
        progress_.text = std::to_string(*done) + " of " + std::to_string(*all);
        const std::size_t end = line.rfind(":\t");
        if (end == std::string_view::npos || line.empty())
            return;
        progress_.file = line.substr(0, end);
        progress_.fileShare =
            LastPercentage(line.substr(end).substr(0, line.substr(end).find('%') + 1));
    }

  private:
    /// Each of the targets is counted from 1 again.
    std::size_t targets_ = 1, target_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeE4defrag() {
    return std::make_unique<E4defrag>();
}

} // namespace kqu::run

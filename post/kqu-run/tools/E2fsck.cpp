#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Recognise.h"
#include "post/kqu-run/tools/Tool.h"

#include <array>
#include <sys/mman.h>

namespace kqu::run {

namespace {
constexpr std::string_view withValue = "b B C E j l L P z";
/// The command that runs the checker of each file system; it hands the descriptor of -C on.
constexpr std::string_view frontEnd = "fsck";
constexpr std::string_view frontEndWithValue = "t";

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
        const bool isFrontEnd = ToolName(launch) == frontEnd;
        const Arguments arguments(launch, isFrontEnd ? frontEndWithValue : withValue);
        row_.tool = post::FindTool("scanner");
        const auto disk = arguments.Operands().empty() ? std::nullopt
                                                       : VolumeOfDisk(arguments.Operands().front());
        if (disk) {
            row_.volume = disk->Shown();
            row_.disk = disk->disk;
        }
        if (arguments.Has("C"))
            launch.stream = arguments.Value("C") == "0" ? 1 : 0;
        else if (disk && !launch.isForeign)
            OpenChannel(launch);
    }

    /// "2 17 130 Data": pass, how far, of how many; or a bar with a percentage.
    void Read(std::string_view line) override {
        const auto pass = TakeNumber(line);
        if (!pass) {
            if (const auto share = LastPercentage(line); share && line.find('|') != line.npos)
                progress_.share = share;
            return;
        }
        TakeMark(line, " ");
        const auto done = TakeNumber(line);
        TakeMark(line, " ");
        const auto all = TakeNumber(line);
        if (!done || !all || *pass < 1 || *pass >= passes.size())
            return;
        const Pass& current = passes[*pass - 1];
        const double inPass =
            Share(static_cast<double>(*done), static_cast<double>(*all)).value_or(0);
        progress_.share = current.begins + inPass * (passes[*pass].begins - current.begins);
        progress_.text = "Pass " + std::to_string(*pass) + " of 5: " + std::string(current.what);
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
} // namespace

std::unique_ptr<Tool> MakeE2fsck() {
    return std::make_unique<E2fsck>();
}

} // namespace kqu::run

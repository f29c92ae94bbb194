#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/TreeSize.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Json.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <cstdlib>

namespace kqu::run {

namespace {
constexpr std::string_view withValue =
    "C H P a c checkpoint-interval chunker-params comment compression d debug-profile debug-topic "
    "e "
    "encryption exclude exclude-from exclude-if-present files-cache filter first format "
    "glob-archives group keep-daily keep-hourly keep-last keep-minutely keep-monthly keep-secondly "
    "keep-weekly keep-within keep-yearly last lock-wait m max-duration o paths-delimiter pattern "
    "patterns-from prefix remote-buffer remote-path remote-ratelimit restrict-to-path "
    "restrict-to-repository rsh sort-by stdin-group stdin-mode stdin-name stdin-user storage-quota "
    "strip-components tar-filter target threshold timestamp umask upload-buffer upload-ratelimit "
    "user w y";
constexpr std::string_view leavesOut =
    "e exclude exclude-from exclude-caches exclude-if-present exclude-nodump pattern patterns-from "
    "paths-from-stdin paths-from-command";

/// With --progress it tells how much it has read, not of how much: that is added up beside it.
class Borg : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, withValue);
        const std::vector<std::string>& operands = arguments.Operands();
        if (operands.empty())
            return;
        row_.folder = true;
        command_ = operands[0];
        progress_.text = "borg " + command_;
        NamePlaces(operands);
        if (command_ == "check") {
            row_.tool = post::FindTool("scanner");
            if (!arguments.Has("archives-only"))
                phases_.emplace_back("Checking segments");
            if (arguments.Has("verify-data"))
                phases_.emplace_back("Verifying data");
            if (!arguments.Has("repository-only"))
                phases_.emplace_back("Analyzing archive");
        }
        isCountable_ = command_ == "create" && !arguments.Has(leavesOut);
        staysOnVolume_ = arguments.Has("x one-file-system");
        // On a terminal a progress is welcome; anywhere else it would stand among the messages.
        const bool asks = command_ == "create" && launch.terminal[2] &&
                          !arguments.Has("p progress log-json list");
        if (asks)
            launch.arguments.insert(launch.arguments.begin() + static_cast<long>(launch.tool) + 1,
                                    "--progress");
        if (asks || arguments.Has("p progress"))
            launch.stream = 2;
    }

    /// "33.55 MB O 33.55 MB C 0 B D 30 N src/d2/big", or "Checking segments 12.5%".
    void Read(std::string_view line) override {
        if (line.starts_with('{')) {
            ReadJson(line);
            return;
        }
        const std::size_t read = line.find(" O ");
        const std::size_t files = line.find(" N ");
        if (read == std::string_view::npos || files == std::string_view::npos) {
            ReadOther(line);
            return;
        }
        done_ = Amount(line.substr(0, read)).value_or(0);
        SetFile(line.substr(files + 3));
    }

    void Look(pid_t /*process*/) override {
        if (isCountable_ && !sources_.empty() && !total_)
            total_.emplace(sources_, staysOnVolume_);
        const auto all = total_ ? total_->Bytes() : std::nullopt;
        if (done_ > 0)
            progress_.done = done_;
        if (all && *all > 0 && done_ > 0) {
            progress_.whole = static_cast<double>(*all);
            progress_.share = Share(done_, *progress_.whole);
        }
    }

  private:
    void NamePlaces(const std::vector<std::string>& operands) {
        const char* given = std::getenv("BORG_REPO");
        std::string repository = operands.size() > 1 ? operands[1] : "";
        repository.erase(std::min(repository.find("::"), repository.size()));
        if (repository.empty() && given != nullptr)
            repository = given;
        const Name name = Destination(repository);
        row_.destination = name;
        if (command_ != "create" || operands.size() < 3) {
            row_.volume = name;
            return;
        }
        sources_.assign(operands.begin() + 2, operands.end());
        row_.volume = FolderNames(sources_);
        const auto volume = VolumeOfFile(sources_.front());
        row_.disk = volume ? volume->disk : "";
    }

    /// "Checking segments 12.5%", "Analyzing archive name (2/3)": a check counts its phases alike.
    void ReadOther(std::string_view line) {
        auto share = LastPercentage(line);
        if (command_ == "create" || (!share && phases_.empty()))
            return;
        const auto phase = std::find_if(phases_.begin(), phases_.end(), [&](std::string_view name) {
            return line.starts_with(name);
        });
        if (phase == phases_.end()) {
            progress_.share = phases_.empty() ? share : progress_.share;
            return;
        }
        std::string_view count = line.substr(std::min(line.rfind('(') + 1, line.size()));
        const auto number = TakeNumber(count);
        if (number && TakeMark(count, "/"))
            share = Share(static_cast<double>(*number) - 1,
                          static_cast<double>(TakeNumber(count).value_or(0)));
        progress_.text = *phase;
        progress_.share = (static_cast<double>(phase - phases_.begin()) + share.value_or(0)) /
                          static_cast<double>(phases_.size());
    }

    void ReadJson(std::string_view line) {
        const Json status(line);
        done_ = status.Number("original_size").value_or(done_);
        SetFile(status.Text("path"));
    }

    /// The name is filled up with blanks to the width of the line.
    void SetFile(std::string_view file) {
        file = file.substr(0, file.find_last_not_of(' ') + 1);
        if (!file.empty())
            progress_.file = file;
    }

    std::string command_;
    /// Those of a check, by the words that each of their lines begins with.
    std::vector<std::string_view> phases_;
    std::vector<std::string> sources_;
    bool isCountable_ = false, staysOnVolume_ = false;
    double done_ = 0;
    std::optional<TreeSize> total_;
};
} // namespace

std::unique_ptr<Tool> MakeBorg() {
    return std::make_unique<Borg>();
}

} // namespace kqu::run

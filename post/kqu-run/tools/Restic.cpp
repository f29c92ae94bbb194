#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Json.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <cstdlib>

namespace kqu::run {

namespace {
constexpr std::string_view withValue =
    "e o r H t cacert cache-dir compression exclude exclude-file exclude-if-present "
    "exclude-larger-than files-from files-from-raw files-from-verbatim host i iexclude "
    "iexclude-file include key-hint limit-download limit-upload option pack-size parent "
    "password-command password-file p repo repository-file retry-lock stdin-filename tag target "
    "time tls-client-cert";

/// It shows its progress on a terminal, and elsewhere if RESTIC_PROGRESS_FPS or --json is given;
/// what that adds elsewhere can't be told from the rest, so it is not asked.
class Restic : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, withValue);
        if (arguments.Operands().empty())
            return;
        command_ = arguments.Operands().front();
        const std::vector<std::string> paths(arguments.Operands().begin() + 1,
                                             arguments.Operands().end());
        NamePlaces(arguments, paths);
        progress_.text = "restic " + command_;
        if (command_ == "check") {
            row_.tool = post::FindTool("scanner");
            counted_ = arguments.Has("read-data read-data-subset") ? " packs" : " snapshots";
        }
        const bool tells = launch.terminal[1] || arguments.Has("json") ||
                           std::getenv("RESTIC_PROGRESS_FPS") != nullptr;
        // Other commands may print a whole file.
        constexpr std::string_view longOnes = " backup restore check prune copy ";
        if (tells && longOnes.find(" " + command_ + " ") != std::string_view::npos)
            launch.stream = 1;
    }

    /// "[0:01] 23.45%  30 files 43.089 MiB, total 31 files 56.267 MiB, 0 errors ETA 0:03"; until
    /// the total is known, without a percentage. Behind it come the files in work, one to a line.
    void Read(std::string_view line) override {
        if (line.starts_with('{'))
            ReadJson(line);
        else if (line.starts_with('['))
            ReadStatus(line);
        else if (line.starts_with('/') && command_ == "backup")
            progress_.file = line;
    }

  private:
    void NamePlaces(const Arguments& arguments, const std::vector<std::string>& paths) {
        const char* given = std::getenv("RESTIC_REPOSITORY");
        const Name repository =
            Destination(arguments.Value("r repo").value_or(given != nullptr ? given : ""));
        row_.folder = true;
        if (command_ == "backup") {
            row_.volume = FolderNames(paths);
            row_.destination = repository;
            const auto volume = paths.empty() ? std::nullopt : VolumeOfFile(paths.front());
            row_.disk = volume ? volume->disk : "";
        } else {
            row_.volume = repository;
            const auto target = arguments.Value("t target");
            row_.destination = target ? LocalDestination(*target) : repository;
        }
    }

    void ReadJson(std::string_view line) {
        const Json status(line);
        if (const auto share = status.Number("percent_done"))
            progress_.share = share;
        if (const std::string file = status.Text("current_files"); !file.empty())
            progress_.file = file;
    }

    void ReadStatus(std::string_view line) {
        // A check counts several things one after the other; the longest makes the bar.
        if (line.find(counted_) == std::string_view::npos)
            return;
        const std::size_t total = line.find(", total ");
        if (const auto share = LastPercentage(line.substr(0, total))) {
            progress_.share = share;
            return;
        }
        if (total == std::string_view::npos)
            return;
        const auto done = AmountBehindFiles(line.substr(0, total));
        const auto all = AmountBehindFiles(line.substr(total + 1));
        if (done && all)
            progress_.share = Share(*done, *all);
    }

    static std::optional<double> AmountBehindFiles(std::string_view text) {
        constexpr std::string_view mark = " files ";
        const std::size_t at = text.find(mark);
        return at == std::string_view::npos ? std::nullopt : Amount(text.substr(at + mark.size()));
    }

    std::string command_;
    std::string_view counted_;
};
} // namespace

std::unique_ptr<Tool> MakeRestic() {
    return std::make_unique<Restic>();
}

} // namespace kqu::run

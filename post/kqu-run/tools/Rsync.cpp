#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/RsyncFilter.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <cmath>

namespace kqu::run {

namespace {
constexpr std::string_view withValue =
    "e f B M T address backup-dir suffix block-size bwlimit checksum-choice cc checksum-seed chmod "
    "chown compare-dest copy-as copy-dest compress-choice zc compress-level zl contimeout debug "
    "early-input exclude exclude-from files-from filter groupmap iconv include include-from info "
    "link-dest log-file log-file-format max-alloc max-delete max-size min-size modify-window "
    "only-write-batch out-format partial-dir password-file port protocol read-batch remote-option "
    "rsh rsync-path skip-compress sockopts stderr stop-after stop-at temp-dir timeout usermap "
    "write-batch";

class Rsync : public Tool {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, withValue);
        const std::vector<std::string>& places = arguments.Operands();
        if (arguments.Has("daemon server help version V"))
            return;
        row_.folder = true;
        if (!places.empty()) {
            row_.destination = Destination(places.back());
            NameSources({places.begin(), places.end() - 1});
        }
        launch.stream = 1;
        AskForProgress(launch, arguments);
    }

    void Read(std::string_view line) override {
        // What is printed around the names of the files; folders are not worth the telling either.
        static const Pattern around("^((sending|receiving) incremental file list|created "
                                    "directory |sent |total size is )|/$");
        static const Pattern done("^ *([0-9.,']+) ");
        if (RsyncProgressLength(line) == 0) {
            if (around.In(line).empty())
                progress_.file = line;
            return;
        }
        const auto percentage = LastPercentage(line);
        if (isOfAll_ && percentage)
            progress_.share = percentage;
        // "8.70M" says too little.
        if (const auto parts = done.In(line); isOfAll_ && !parts.empty())
            progress_.done = Count(parts[1]);
        const bool isWhole = ReadChecked(line);
        if (!isOfAll_ && all_ > 0)
            progress_.share = (checked_ + (isWhole ? 0 : percentage.value_or(0))) / all_;
    }

  private:
    /// A line of what is left is printed over and over at the beginning of the line and taken out
    /// again. Not where the user has asked for another, or has chosen lines that might look like
    /// it.
    void AskForProgress(Launch& launch, const Arguments& arguments) {
        const std::string info = arguments.Value("info").value_or("");
        isOfAll_ = info.find("progress2") != std::string::npos;
        const bool hasOwn =
            info.find("progress") != std::string::npos ||
            arguments.Has("progress P quiet q out-format list-only outbuf stderr msgs2stderr");
        if (hasOwn || arguments.Operands().size() < 2)
            return;
        launch.arguments.insert(launch.arguments.begin() + static_cast<long>(launch.tool) + 1,
                                "--info=progress2");
        isOfAll_ = launch.filters = true;
    }

    /// "(xfr#3, to-chk=28/34)": files that are still to be looked at, of all. Returns whether all
    /// are known.
    bool ReadChecked(std::string_view line) {
        static const Pattern counts("xfr#([0-9]+), (to|ir)-chk=([0-9]+)/([0-9]+)\\)");
        const auto parts = counts.In(line);
        if (parts.empty())
            return false;
        const double all = Count(parts[4]), checked = all - Count(parts[3]);
        const bool isWhole = parts[2] == "to";
        if (isWhole) {
            checked_ = checked;
            all_ = all;
        }
        // The bytes are counted of all files, those that need no transfer included: where most are
        // left out, only the number of files says how far it is.
        if (isWhole && isOfAll_ && Count(parts[1]) < checked / 2)
            progress_.share = std::max(Share(checked, all), progress_.share);
        if (isOfAll_)
            progress_.file.clear();
        progress_.text = std::to_string(std::lround(checked)) + " of " + std::string(parts[4]) +
                         (isWhole ? " files" : " files so far");
        return isWhole;
    }

    bool isOfAll_ = false;
    /// Files, as far as their number is known.
    double checked_ = 0, all_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeRsync() {
    return std::make_unique<Rsync>();
}

} // namespace kqu::run

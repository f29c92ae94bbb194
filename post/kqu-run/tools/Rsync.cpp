#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/RsyncFilter.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <array>

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

/// What is printed around the names of the files; folders are not worth the telling either.
bool IsMessage(std::string_view line) {
    constexpr std::array<std::string_view, 5> messages{
        "sending incremental file list", "receiving incremental file list", "created directory ",
        "sent ", "total size is "};
    return line.ends_with('/') ||
           std::any_of(messages.begin(), messages.end(),
                       [&](std::string_view message) { return line.starts_with(message); });
}

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
            row_.volume = FolderNames({places.begin(), places.end() - 1});
        }
        if (!IsElsewhere(places.empty() ? "" : places.front()))
            if (const auto volume = VolumeOfFile(places.empty() ? "." : places.front()))
                row_.disk = volume->disk;
        launch.stream = 1;
        AskForProgress(launch, arguments);
    }

    void Read(std::string_view line) override {
        if (RsyncProgressLength(line) == 0) {
            if (!IsMessage(line))
                progress_.file = line;
            return;
        }
        ReadChecked(line);
        const auto percentage = LastPercentage(line);
        if (isOfAll_ && percentage)
            progress_.share = percentage;
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

    /// "(xfr#3, to-chk=28/34)": files that are still to be looked at, of all.
    void ReadChecked(std::string_view line) {
        const std::size_t at = line.find("-chk=");
        if (at == std::string_view::npos)
            return;
        const bool isWhole = line.substr(0, at).ends_with("to");
        line.remove_prefix(at + 5);
        const auto left = TakeNumber(line);
        const bool divided = TakeMark(line, "/");
        const auto all = TakeNumber(line);
        if (!left || !divided || !all || !TakeMark(line, ")") || *left > *all)
            return;
        if (!isOfAll_)
            progress_.share = Share(static_cast<double>(*all - *left), static_cast<double>(*all));
        if (isOfAll_)
            progress_.file.clear();
        progress_.text = std::to_string(*all - *left) + " of " + std::to_string(*all) +
                         (isWhole ? " files" : " files so far");
    }

    bool isOfAll_ = false;
};
} // namespace

std::unique_ptr<Tool> MakeRsync() {
    return std::make_unique<Rsync>();
}

} // namespace kqu::run

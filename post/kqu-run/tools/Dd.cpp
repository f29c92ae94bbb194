#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <cstdlib>
#include <map>

namespace kqu::run {

namespace {
constexpr std::uint64_t usualBlock = 512;

std::string Megabytes(std::uint64_t bytes) {
    constexpr std::uint64_t megabyte = 1000 * 1000;
    return std::to_string(bytes / megabyte) + " MB";
}

/// dd needn't be asked: the kernel tells where in its files it is.
class Dd : public Tool {
  public:
    void Prepare(Launch& launch) override {
        for (std::size_t i = launch.tool + 1; i < launch.arguments.size(); ++i) {
            const std::string& argument = launch.arguments[i];
            const std::size_t equals = std::min(argument.find('='), argument.size() - 1);
            given_[argument.substr(0, equals)] = argument.substr(equals + 1);
        }
        NamePlaces();
        FindTotal();
        // Where the kernel doesn't tell, the user may have asked dd itself.
        if (given_["status"] == "progress")
            launch.stream = 2;
    }

    void Look(pid_t process) override {
        const auto read = PositionOf(process, STDIN_FILENO);
        const auto written = PositionOf(process, STDOUT_FILENO);
        // A source or a destination that has no position stays at 0.
        const std::uint64_t done =
            std::max(Beyond(read, "skip iseek", "ibs"), Beyond(written, "seek oseek", "obs"));
        if (done > 0)
            Tell(done);
    }

    /// "377487360 bytes (377 MB, 360 MiB) copied, 1 s, 377 MB/s", in the words of any language.
    void Read(std::string_view line) override {
        const auto done = TakeNumber(line);
        if (done && line.starts_with(' ') && line.find('(') != std::string_view::npos)
            Tell(*done);
    }

  private:
    void NamePlaces() {
        const std::string source = given_["if"];
        const std::string target = given_["of"];
        const auto disk = VolumeOfDisk(source);
        const auto targetDisk = VolumeOfDisk(target);
        row_.volume = disk ? disk->name : LastComponent(source);
        row_.disk = disk ? disk->disk : "";
        const bool isToDisk = targetDisk && !targetDisk->disk.empty();
        row_.destination = isToDisk ? targetDisk->name : target;
        row_.image = disk && !disk->disk.empty() && !isToDisk && !target.empty();
    }

    std::uint64_t BlockSize(const char* key) {
        return DdSize(given_[given_.contains("bs") ? "bs" : key]).value_or(usualBlock);
    }

    void FindTotal() {
        const auto size = SizeOf(given_["if"]);
        const auto count = DdSize(given_["count"]);
        const std::uint64_t skipped = DdSize(given_["skip"]).value_or(0) * BlockSize("ibs");
        if (size && *size > skipped)
            total_ = *size - skipped;
        if (count) {
            const bool isBytes = given_["iflag"].find("count_bytes") != std::string::npos ||
                                 given_["count"].ends_with('B');
            const std::uint64_t wanted = *count * (isBytes ? 1 : BlockSize("ibs"));
            total_ = total_ > 0 ? std::min(total_, wanted) : wanted;
        }
    }

    /// How far behind its first block a position is.
    std::uint64_t Beyond(const std::optional<std::uint64_t>& position, std::string_view options,
                         const char* block) {
        std::uint64_t begin = 0;
        for (const std::string_view option : Words(options))
            begin += DdSize(given_[std::string(option)]).value_or(0) * BlockSize(block);
        return position && *position > begin ? *position - begin : 0;
    }

    void Tell(std::uint64_t done) {
        progress_.share = Share(static_cast<double>(done), static_cast<double>(total_));
        progress_.text = Megabytes(done) + (total_ > 0 ? " of " + Megabytes(total_) : "");
    }

    std::map<std::string, std::string> given_;
    std::uint64_t total_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeDd() {
    return std::make_unique<Dd>();
}

} // namespace kqu::run

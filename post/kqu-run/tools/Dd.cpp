#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace kqu::run {

namespace {
constexpr std::uint64_t usualBlock = 512;

std::string FolderOf(const std::string& path) {
    std::error_code failure;
    return std::filesystem::absolute(path, failure).parent_path().string();
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
        const std::uint64_t done = std::max(Beyond(read, Skipped()), Beyond(written, Sought()));
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
        const bool isToDisk = targetDisk && !targetDisk->disk.empty();
        row_.volume = disk ? disk->Shown() : Name{LastComponent(source), {}};
        row_.disk = disk ? disk->disk : "";
        std::error_code failure;
        if (std::filesystem::is_character_file(source, failure)) {
            // Zeros or random numbers are nobody's volume.
            const auto volume = isToDisk         ? targetDisk
                                : target.empty() ? std::nullopt
                                                 : VolumeOfFile(FolderOf(target));
            row_.volume = volume ? volume->Shown() : Name{};
            row_.disk = volume ? volume->disk : "";
        }
        row_.destination = isToDisk         ? targetDisk->Shown()
                           : target.empty() ? OpenName("standard output")
                                            : LocalDestination(target);
        row_.image = disk && !disk->disk.empty() && !isToDisk && !target.empty();
    }

    std::uint64_t BlockSize(const char* key) {
        return DdSize(given_[given_.contains("bs") ? "bs" : key]).value_or(usualBlock);
    }

    void FindTotal() {
        const auto size = SizeOf(given_["if"]);
        const auto count = DdSize(given_["count"]);
        if (size)
            total_ = Beyond(size, Skipped());
        if (count) {
            const bool isBytes = given_["iflag"].find("count_bytes") != std::string::npos ||
                                 given_["count"].ends_with('B');
            const std::uint64_t wanted = *count * (isBytes ? 1 : BlockSize("ibs"));
            Limit(wanted);
        }
        // A disk ends, unlike a file.
        std::error_code failure;
        const std::uint64_t room = std::filesystem::is_block_file(given_["of"], failure)
                                       ? Beyond(SizeOf(given_["of"]), Sought())
                                       : 0;
        if (room > 0)
            Limit(room);
    }

    void Limit(std::uint64_t most) { total_ = total_ > 0 ? std::min(total_, most) : most; }

    /// Where it begins to read and to write, in bytes.
    std::uint64_t Skipped() { return Begin("skip iseek", "ibs", "iflag", "skip_bytes"); }
    std::uint64_t Sought() { return Begin("seek oseek", "obs", "oflag", "seek_bytes"); }

    std::uint64_t Begin(std::string_view options, const char* block, const char* flags,
                        const char* bytes) {
        const bool isBytes = given_[flags].find(bytes) != std::string::npos;
        std::uint64_t begin = 0;
        for (const std::string_view option : Words(options)) {
            const std::string& value = given_[std::string(option)];
            const std::uint64_t unit = isBytes || value.ends_with('B') ? 1 : BlockSize(block);
            begin += DdSize(value).value_or(0) * unit;
        }
        return begin;
    }

    /// How far behind its first block a position is.
    static std::uint64_t Beyond(const std::optional<std::uint64_t>& position, std::uint64_t begin) {
        return position && *position > begin ? *position - begin : 0;
    }

    void Tell(std::uint64_t done) {
        progress_.done = static_cast<double>(done);
        if (total_ > 0)
            progress_.whole = static_cast<double>(total_);
        progress_.share = Share(*progress_.done, static_cast<double>(total_));
    }

    std::map<std::string, std::string> given_;
    std::uint64_t total_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeDd() {
    return std::make_unique<Dd>();
}

} // namespace kqu::run

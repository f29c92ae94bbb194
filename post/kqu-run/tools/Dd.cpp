#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace kqu::run {

namespace {
namespace files = std::filesystem;
constexpr std::uint64_t usualBlock = 512;

/// dd needn't be asked: it is as far as it has read of what its operands name.
class Dd : public Tool {
  public:
    void Prepare(Launch& launch) override {
        for (const std::string& argument : std::span(launch.arguments).subspan(launch.tool + 1)) {
            const std::size_t equals = std::min(argument.find('='), argument.size());
            given_[argument.substr(0, equals)] =
                argument.substr(std::min(equals + 1, argument.size()));
        }
        NamePlaces();
        work_.isKnown = true;
        work_.bytes = static_cast<double>(Total());
        // Where the kernel reports nothing, the user may have asked dd itself.
        if (given_["status"] == "progress")
            launch.stream = 2;
    }

    /// "377487360 bytes (377 MB, 360 MiB) copied, 1 s, 377 MB/s", in the words of any language.
    void Read(std::string_view line) override {
        static const Pattern copied("^([0-9]+) [^(]*\\(");
        if (const auto parts = copied.In(line); !parts.empty() && !isMeasured_)
            Report(Count(parts[1]), work_.bytes);
    }

  private:
    void NamePlaces() {
        const std::string source = given_["if"], target = given_["of"];
        const auto disk = VolumeOfDisk(source);
        const auto targetDisk = VolumeOfDisk(target);
        const bool isToDisk = targetDisk && !targetDisk->disk.empty();
        std::error_code failure;
        isEndless_ = files::is_character_file(source, failure);
        auto volume = disk;
        if (isEndless_) // zeros or random numbers are nobody's volume
            volume = isToDisk         ? targetDisk
                     : target.empty() ? std::nullopt
                                      : VolumeOfFile(files::absolute(target).parent_path());
        row_.volume = volume ? volume->Shown() : Name{isEndless_ ? "" : LastComponent(source), {}};
        row_.disk = volume ? volume->disk : "";
        row_.destination = isToDisk         ? targetDisk->Shown()
                           : target.empty() ? OpenName("standard output")
                                            : LocalDestination(target);
        row_.image = disk && !disk->disk.empty() && !isToDisk && !target.empty();
    }

    /// How much will be read; 0 if that isn't known. A disk ends, unlike a file; what comes through
    /// a pipe may end before.
    std::uint64_t Total() {
        std::uint64_t total = Beyond(given_["if"], Bytes("skip iseek", "ibs", "iflag"));
        std::error_code failure;
        if (isEndless_ && files::is_block_file(given_["of"], failure))
            total = Beyond(given_["of"], Bytes("seek oseek", "obs", "oflag"));
        const std::uint64_t wanted = Bytes("count", "ibs", "iflag");
        return wanted == 0 ? total : total == 0 ? wanted : std::min(total, wanted);
    }

    static std::uint64_t Beyond(const std::string& path, std::uint64_t begin) {
        const std::uint64_t size = SizeOf(path).value_or(0);
        return size - std::min(begin, size);
    }

    /// The sum of these options in bytes, which are given in blocks unless a flag or a B says not.
    std::uint64_t Bytes(std::string_view options, const char* block, const char* flags) {
        std::uint64_t sum = 0;
        for (const std::string_view option : Words(options)) {
            const std::string& value = given_[std::string(option)];
            const bool isBytes =
                value.ends_with('B') ||
                given_[flags].find(std::string(option) + "_bytes") != std::string::npos;
            const std::string& size = given_[given_.contains("bs") ? "bs" : block];
            sum += DdSize(value).value_or(0) * (isBytes ? 1 : DdSize(size).value_or(usualBlock));
        }
        return sum;
    }

    std::map<std::string, std::string> given_;
    bool isEndless_ = false;
};
} // namespace

std::unique_ptr<Tool> MakeDd() {
    return std::make_unique<Dd>();
}

} // namespace kqu::run

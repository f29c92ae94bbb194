#include "platform/CDeleter.h"
#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"
#include "platform/text/PlainText.h"
#include "platform/volumes/Volumes.h"

#include <glib.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kqu::platform {

namespace {
constexpr std::int32_t success = 0;
constexpr std::int32_t noSuchVolume = -35;
constexpr std::int32_t cannotRead = -36;
constexpr std::int32_t noSuchFile = -43;
constexpr std::int32_t badArgument = -50;
constexpr std::size_t fileCountOffset = 32;

using Text = CPointer<char, g_free>;

/// A name of a single entry of a folder; nothing for a text that can't be one.
std::optional<std::string> EntryName(const char16_t* name, std::uint32_t length) {
    if (length == 0)
        return std::nullopt;
    const std::vector<gunichar2> units(name, name + length);
    const Text text(
        g_utf16_to_utf8(units.data(), static_cast<glong>(units.size()), nullptr, nullptr, nullptr));
    // The conversion stops at a NUL, which no name holds.
    if (!text || std::count(units.begin(), units.end(), 0) != 0)
        return std::nullopt;
    const std::string plain = text.get();
    if (plain == "." || plain == ".." || plain.find('/') != std::string::npos)
        return std::nullopt;
    return plain;
}

/// References to files in blocks of 80 bytes that have no meaning to their users.
///
/// A block holds a mark and a running number; the path stays here, with those of the latest
/// references. Blocks are made to be used soon: one whose path has been forgotten, and one that was
/// never written, name no file.
class FileReferences {
  public:
    /// Writes a whole block that refers to the path.
    void Write(std::string path, std::byte* block) {
        if (paths_.size() == remembered) {
            paths_.pop_front();
            ++first_;
        }
        const Content content{referenceMark, first_ + paths_.size()};
        paths_.push_back(std::move(path));
        std::memset(block, 0, blockSize);
        std::memcpy(block, &content, sizeof content);
    }

    [[nodiscard]] std::optional<std::string> PathOf(const std::byte* block) const {
        Content content;
        std::memcpy(&content, block, sizeof content);
        if (content.mark != referenceMark || content.number < first_ ||
            content.number - first_ >= paths_.size())
            return std::nullopt;
        return paths_[content.number - first_];
    }

  private:
    struct Content {
        std::uint64_t mark = 0;
        std::uint64_t number = 0;
    };
    /// Tells a reference from any other block, a zero-filled one in particular.
    static constexpr std::uint64_t referenceMark = 0x4B51'5546'5352'6566;
    static constexpr std::size_t blockSize = 80;
    static constexpr std::size_t remembered = 256;

    std::deque<std::string> paths_;
    /// The number of the oldest path that is remembered.
    std::uint64_t first_ = 0;
};

class VolumeCalls {
  public:
    VolumeCalls(Handles& handles, const std::filesystem::path& root)
        : handles_(handles), volumes_(root) {}

    std::int32_t GetVolumeInfo(std::int32_t reference, std::uint32_t index,
                               std::int32_t* actualVolume, std::uint32_t whichInfo, std::byte* info,
                               std::u16string* volumeName, std::byte* rootDirectory) {
        const std::optional<Volume> volume = reference == 0 ? Nth(index) : volumes_.Find(reference);
        if (!volume)
            return noSuchVolume;
        if (whichInfo != 0 && info != nullptr) {
            const std::optional<std::uint32_t> files = volumes_.FileCount(*volume);
            if (!files)
                return cannotRead;
            std::memcpy(info + fileCountOffset, &*files, sizeof *files);
        }
        if (actualVolume != nullptr)
            *actualVolume = volume->reference;
        if (volumeName != nullptr)
            *volumeName = ToUtf16(volumes_.NameOf(*volume));
        if (rootDirectory != nullptr)
            references_.Write(volume->mountPoint, rootDirectory);
        return success;
    }

    std::int32_t CopyDiskID(std::int32_t reference, functions::StringHandle* diskID) {
        const std::optional<Volume> volume = volumes_.Find(reference);
        if (!volume || volume->disk.empty() || diskID == nullptr)
            return noSuchVolume;
        *diskID = handles_.AddText(volume->disk);
        return success;
    }

    std::int32_t MakeReference(const std::byte* parent, std::uint32_t nameLength,
                               const char16_t* name, std::byte* reference) {
        const auto folder = references_.PathOf(parent);
        const auto entry = EntryName(name, nameLength);
        if (!folder || !entry)
            return badArgument;
        std::string path = (std::filesystem::path(*folder) / *entry).string();
        if (!IsThere(path))
            return noSuchFile;
        references_.Write(std::move(path), reference);
        return success;
    }

    std::int32_t MakePath(const std::byte* reference, char* path, std::uint32_t size) {
        const auto found = references_.PathOf(reference);
        if (!found || found->size() >= size)
            return badArgument;
        if (!IsThere(*found))
            return noSuchFile;
        std::memcpy(path, found->c_str(), found->size() + 1);
        return success;
    }

    std::vector<MountedVolume> Mounted() {
        std::vector<MountedVolume> all;
        for (const Volume& volume : volumes_.Mounted())
            all.push_back({volume.reference, volumes_.NameOf(volume), volume.mountPoint});
        return all;
    }

  private:
    std::optional<Volume> Nth(std::uint32_t index) {
        const std::vector<Volume> mounted = volumes_.Mounted();
        if (index == 0 || index > mounted.size())
            return std::nullopt;
        return mounted[index - 1];
    }

    [[nodiscard]] bool IsThere(const std::string& path) const {
        std::error_code error;
        return std::filesystem::exists(
            std::filesystem::symlink_status(volumes_.NativePath(path), error));
    }

    Handles& handles_;
    Volumes volumes_;
    FileReferences references_;
};
} // namespace

void RegisterVolumeFunctions(FunctionTable& table, Handles& handles,
                             const std::filesystem::path& root) {
    const auto calls = std::make_shared<VolumeCalls>(handles, root);
    table.Set<functions::FSGetVolumeInfo>(
        [calls](auto... arguments) { return calls->GetVolumeInfo(arguments...); });
    table.Set<functions::FSCopyDiskIDForVolume>(
        [calls](std::int32_t volume, functions::StringHandle* diskID) {
            return calls->CopyDiskID(volume, diskID);
        });
    table.Set<functions::FSMakeFSRefUnicode>(
        [calls](const std::byte* parent, std::uint32_t nameLength, const char16_t* name,
                std::uint32_t /*encodingHint*/, std::byte* reference) {
            return calls->MakeReference(parent, nameLength, name, reference);
        });
    table.Set<functions::FSRefMakePath>(
        [calls](const std::byte* reference, char* path, std::uint32_t size) {
            return calls->MakePath(reference, path, size);
        });
    table.Set<functions::MountedVolumes>([calls] { return calls->Mounted(); });
}

} // namespace kqu::platform

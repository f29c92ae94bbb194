#include "monitor/DefragVolume.h"

#include "bridges/VolumeBridges.h"
#include "framework/FunctionLookup.h"
#include "framework/files/FolderItem.h"
#include "framework/files/KnownFolders.h"
#include "framework/files/Streams.h"
#include "framework/values/MemoryBlock.h"
#include "framework/values/Numbers.h"
#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"

#include <memory>
#include <string_view>

namespace kqu {

namespace {
constexpr int volumeInfoSize = 126;
constexpr int fileCountOffset = 32;
constexpr std::uint32_t allInfo = 0xFFFF;
/// A hundred thousand volumes.
constexpr std::size_t longestLookupFile = std::size_t{16} << 20U;

/// The suite's look-up file. It hangs directly under the root, and its folder's name is written as
/// the suite writes it.
Ref<FolderItem> FindLookupFile() {
    Ref<FolderItem> item = GetFolderItem("/", PathForm::Shell);
    for (const char* name : {"Application Support", "Brackwater Utilties Support", "BSDLookup"}) {
        item = item ? item->Child(name) : nullptr;
        if (!item || !item->Exists())
            return nullptr;
    }
    return item;
}

/// Lines of disk name, volume name and number of files, separated by returns alone.
bool ResolveFromLookupFile(Dictionary& row, const std::string& disk) {
    const Ref<FolderItem> file = FindLookupFile();
    if (!file)
        return false;
    const Ref<FileStream> stream = Required(file->OpenAsTextFile());
    const std::string text = stream->ReadAll(longestLookupFile);
    stream->Close();
    std::string_view rest = text;
    for (bool more = !text.empty(); more;) {
        const std::size_t end = rest.find('\r');
        const std::string_view entry = rest.substr(0, end);
        if (EqualsIgnoringCase(entry.substr(0, entry.find(':')), disk)) {
            row.SetValue("volume", Showable(NthField(entry, ":", 2)));
            row.SetValue("TotalFiles", ToInt32(Val(NthField(entry, ":", 3))));
            return true;
        }
        more = end != std::string_view::npos;
        rest.remove_prefix(more ? end + 1 : 0);
    }
    return false;
}

std::uint32_t FilesOnVolume(std::int32_t vRefNum) {
    const auto info = std::make_shared<MemoryBlock>(volumeInfoSize);
    // An error leaves the block zero-filled, and so the number at 0.
    Lookup<functions::FSGetVolumeInfo>()(vRefNum, 0U, nullptr, allInfo, info->Data(), nullptr,
                                         nullptr);
    return info->UInt32Value(fileCountOffset);
}

bool ResolveFromMountedVolumes(Dictionary& row) {
    const std::string disk = row.Value("BSD").StringValue();
    const int count = VolumeCount();
    for (int index = 0; index < count; ++index) {
        const Ref<FolderItem> volume = Volume(index);
        if (!volume || !EqualsIgnoringCase(GetBSDNameForVRef(volume->MacVRefNum(), true), disk))
            continue;
        row.SetValue("volume", volume->Name());
        row.SetValue("TotalFiles", FilesOnVolume(volume->MacVRefNum()));
        return true;
    }
    return false;
}
} // namespace

void ResolveVolume(Dictionary& row, const std::string& disk) {
    row.SetValue("BSD", Showable(disk));
    if (ResolveFromLookupFile(row, disk) || ResolveFromMountedVolumes(row))
        return;
    row.SetValue("volume", row.Value("BSD"));
}

} // namespace kqu

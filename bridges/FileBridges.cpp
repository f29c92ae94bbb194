#include "framework/FunctionLookup.h"
#include "framework/files/FolderItem.h"
#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "shell/App.h"

#include <memory>
#include <optional>

// From file items and volumes to the platform's raw references, and from those to the owner of a
// file. The results report failures.

namespace kqu {

namespace {
constexpr int fileStatusSize = 88;
constexpr int failedStatusSize = 80;
constexpr int ownerOffset = 12;
constexpr int fileReferenceSize = 80;
constexpr std::uint32_t pathBufferSize = 1024;
constexpr std::int32_t volumeRootID = 1;
constexpr std::uint32_t anyEncoding = 0xFFFF;

Ref<MemoryBlock> FailedStatus() {
    auto block = std::make_shared<MemoryBlock>(failedStatusSize);
    block->SetInt32Value(ownerOffset, -1);
    return block;
}

/// The path behind a file reference, or nothing if the platform has none.
std::optional<std::string> PathOf(const MemoryBlock& reference) {
    const auto buffer = std::make_shared<MemoryBlock>(pathBufferSize);
    if (Lookup<functions::FSRefMakePath>()(reference.Data(), buffer->CharData(), pathBufferSize) !=
        0)
        return std::nullopt;
    return buffer->CString(0);
}
} // namespace

Ref<MemoryBlock> App::GetLStat(const Variant& file) {
    auto block = std::make_shared<MemoryBlock>(fileStatusSize);
    std::string path;
    if (const auto item = std::dynamic_pointer_cast<FolderItem>(file.ObjectValue())) {
        const auto found = PathOf(*Required(FolderItemToFSRef(item)));
        if (!found)
            return FailedStatus();
        path = *found;
    } else {
        path = file.StringValue();
    }
    // The result is not looked at: a path that is not there leaves the block zero-filled, and its
    // owner reads as 0, unlike the failure above.
    Lookup<functions::lstat>()(path, block->Data(), static_cast<std::size_t>(fileStatusSize));
    return block;
}

Ref<MemoryBlock> App::FolderItemToFSRef(const Ref<FolderItem>& item) {
    auto block = std::make_shared<MemoryBlock>(fileReferenceSize);
    if (!item)
        return nullptr;
    if (item->MacDirID() == volumeRootID)
        return VolumeRefToFSRef(item->MacVRefNum());
    const Ref<FolderItem> parent = item->Parent();
    const Ref<MemoryBlock> parentReference = parent ? FolderItemToFSRef(parent) : nullptr;
    if (!parentReference)
        return nullptr;
    const std::u16string name = ToUtf16(item->Name());
    const std::int32_t status = Lookup<functions::FSMakeFSRefUnicode>()(
        parentReference->Data(), static_cast<std::uint32_t>(name.size()), name.data(), anyEncoding,
        block->Data());
    return status == 0 ? block : nullptr;
}

Ref<MemoryBlock> App::VolumeRefToFSRef(std::int32_t vRefNum) {
    auto block = std::make_shared<MemoryBlock>(fileReferenceSize);
    // Nothing but the root directory is asked for, and the result is not looked at.
    Lookup<functions::FSGetVolumeInfo>()(vRefNum, 0U, nullptr, 0U, nullptr, nullptr, block->Data());
    return block;
}

} // namespace kqu

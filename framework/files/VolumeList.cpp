#include "framework/files/VolumeList.h"

#include "framework/FunctionLookup.h"

#include <iterator>
#include <memory>
#include <vector>

namespace kqu {

namespace {
/// The list as the platform has it now; it may change from one call to the next.
std::vector<platform::MountedVolume> Mounted() {
    if (!IsFunctionAvailable<functions::MountedVolumes>())
        return {};
    return Lookup<functions::MountedVolumes>()();
}
} // namespace

int VolumeCount() {
    return static_cast<int>(Mounted().size());
}

Ref<FolderItem> Volume(int index) {
    const auto mounted = Mounted();
    if (index < 0 || index >= std::ssize(mounted))
        return nullptr;
    return std::make_shared<FolderItem>(mounted[static_cast<std::size_t>(index)]);
}

} // namespace kqu

#pragma once

#include "framework/files/FolderItem.h"

namespace kqu {

/// Number of volumes that are mounted now.
[[nodiscard]] int VolumeCount();

/// The root of a volume, by its place in the list, counted from 0; nil if there is none by now.
[[nodiscard]] Ref<FolderItem> Volume(int index);

} // namespace kqu

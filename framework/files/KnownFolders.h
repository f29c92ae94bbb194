#pragma once

#include "framework/files/FolderItem.h"

namespace kqu {

/// The preferences folder of the user that the process settled on, by the XDG Base Directory rules:
/// $XDG_CONFIG_HOME, else .config in the user's home. The environment counts as long as the process
/// is the user that it was started as; otherwise the home is that of the user's account. Nil if no
/// home is known.
[[nodiscard]] Ref<FolderItem> PreferencesFolder();

/// The folder that describes the program: share/kqu-messenger beside the folder that the program
/// was started from. Nil if that is unknown.
[[nodiscard]] Ref<FolderItem> BundleFolder();

/// Number of volumes that are mounted now.
[[nodiscard]] int VolumeCount();

/// The root of a volume, by its place in the list, counted from 0; nil if there is none by now.
[[nodiscard]] Ref<FolderItem> Volume(int index);

} // namespace kqu

#pragma once

#include "platform/functions/FunctionTable.h"
#include "platform/functions/Handles.h"

#include <filesystem>

namespace kqu::platform {

/// Enters `FSGetVolumeInfo`, `FSCopyDiskIDForVolume`, `FSMakeFSRefUnicode`, `FSRefMakePath` and
/// `MountedVolumes`. A call that fails returns a status other than 0 and writes nothing.
///
/// - `FSGetVolumeInfo` takes the volume's number, or 0 and an index from 1 on. Of the block of 126
///   bytes it fills the number of files, 32 bits at offset 32, if any information is asked for at
///   all; only then it asks the volume's file system. The reference to the root directory takes 80
///   bytes.
/// - `FSCopyDiskIDForVolume` hands over a text that its receiver has to release.
/// - `FSMakeFSRefUnicode` takes the name of an entry of the parent, a link being an entry like any
///   other, and fails if there is no such entry.
/// - `FSRefMakePath` fails if the path with its NUL needs more than the size, or if the file is no
///   longer there.
///
/// `handles` must outlive the table. Paths are those of a tree of files below `root`.
void RegisterVolumeFunctions(FunctionTable& table, Handles& handles,
                             const std::filesystem::path& root = "/");

} // namespace kqu::platform

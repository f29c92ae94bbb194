#pragma once

#include "platform/functions/Handles.h"
#include "platform/interfaces/FunctionTable.h"
#include "platform/interfaces/NativeWindow.h"

#include <filesystem>

// How Linux provides the functions that are reached by name. Each of these enters the functions of
// one subject into the table, which `handles` and `updates` must outlive.

namespace kqu::platform {

/// `popen`, `feof`, `fread`, `ferror` and `pclose`: the C library's own, on handles. A handle that
/// stands for no stream, such as that of a command that could not be started, reads as a stream at
/// its end and in error. A stream that nobody closes is closed with the handles.
void RegisterShellFunctions(FunctionTable& table, Handles& handles);

/// `lstat`, `seteuid`, `setuid`, `getuid` and `Gestalt`.
///
/// `lstat` writes the owner's id at byte offset 12 of the record and nothing else; on failure, or
/// if the record is too small for that, it returns -1 and writes nothing. Where "/dev/console"
/// belongs to root, the active user of seat0 stands for its owner, as logind names that user.
///
/// `seteuid` and `setuid` have the meaning that they have on BSD systems. In particular, after
/// `seteuid(u)` a process that came from root gives everything up with `setuid(u)`.
///
/// `Gestalt` knows the system's version, "sysv", and nothing else.
void RegisterIdentityFunctions(FunctionTable& table);

/// `CFStringGetCString`, under both libraries that it is asked for in, and `CFRelease`.
///
/// A conversion succeeds if the handle stands for a text, the encoding is UTF-8 and the buffer
/// takes all its bytes with a NUL behind them; a failed one leaves an empty string in the buffer.
void RegisterCoreFoundationFunctions(FunctionTable& table, Handles& handles);

/// `FSGetVolumeInfo`, `FSCopyDiskIDForVolume`, `FSMakeFSRefUnicode`, `FSRefMakePath` and
/// `MountedVolumes`. A call that fails returns a status other than 0 and writes nothing. Paths are
/// those of a tree of files below `root`.
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
void RegisterVolumeFunctions(FunctionTable& table, Handles& handles,
                             const std::filesystem::path& root = "/");

/// `IOPSCopyPowerSourcesInfo`, which takes down the state of the power supplies, and
/// `IOPSGetProvidingPowerSourceType`, which names the source by such a blob, or gives 0 for
/// something that is no blob. What both return goes when it is released.
void RegisterPowerSupplyFunctions(FunctionTable& table, Handles& handles);

/// The functions on one window, which are alpha, attributes, collapsed state and tile, size and
/// drag, and those that hold back and release the updates of the screen. The first go to the native
/// window that they are called with; without one, the status says so.
void RegisterWindowFunctions(FunctionTable& table, ScreenUpdates& updates);

/// `TruncateThemeText`. The theme's one font is the default face at 13 pixels; font ids and draw
/// states make no difference. The status is always 0.
void RegisterTextFunctions(FunctionTable& table);

} // namespace kqu::platform

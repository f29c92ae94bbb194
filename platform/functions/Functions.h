#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/volumes/MountedVolume.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The descriptions of all functions that are reached by name: one type each, with the name and the
/// library under which it is asked for and the form in which it is called.
namespace kqu::functions {

using platform::NativeWindow;

inline constexpr std::string_view systemLibrary = "System.framework";
inline constexpr std::string_view carbonLibrary = "Carbon.framework";
inline constexpr std::string_view ioKitLibrary = "IOKit.framework";
inline constexpr std::string_view coreFoundationLibrary = "CoreFoundation.framework";

/// A reference of 32 bits to something that the platform keeps: 0 is none.
using StreamHandle = std::int32_t;
using StringHandle = std::int32_t;
using BlobHandle = std::int32_t;

// The C library's streams on commands. Streams travel as handles of 32 bits.
struct popen {
    static constexpr std::string_view name = "popen", library = systemLibrary;
    using Signature = StreamHandle(const std::string& command, const char* mode);
};
struct feof {
    static constexpr std::string_view name = "feof", library = systemLibrary;
    using Signature = int(StreamHandle stream);
};
struct fread {
    static constexpr std::string_view name = "fread", library = systemLibrary;
    using Signature = std::size_t(void* block, std::size_t size, std::size_t count,
                                  StreamHandle stream);
};
struct ferror {
    static constexpr std::string_view name = "ferror", library = systemLibrary;
    using Signature = int(StreamHandle stream);
};
struct pclose {
    static constexpr std::string_view name = "pclose", library = systemLibrary;
    using Signature = int(StreamHandle stream);
};

// Identity and file status.
/// Writes the 88-byte record with the owner's 32-bit id at byte offset 12; 0 for success.
struct lstat {
    static constexpr std::string_view name = "lstat", library = systemLibrary;
    using Signature = int(const std::string& path, std::byte* record, std::size_t size);
};
struct seteuid {
    static constexpr std::string_view name = "seteuid", library = systemLibrary;
    using Signature = int(std::uint32_t user);
};
struct setuid {
    static constexpr std::string_view name = "setuid", library = systemLibrary;
    using Signature = int(std::uint32_t user);
};
struct getuid {
    static constexpr std::string_view name = "getuid", library = systemLibrary;
    using Signature = std::uint32_t();
};

/// Asks about the system, "sysv" for its version in the form 0xMMmb; true for success.
struct Gestalt {
    static constexpr std::string_view name = "Gestalt", library = carbonLibrary;
    using Signature = bool(std::string_view selector, std::int32_t& value);
};

// Windows. Results are status codes, 0 for success.
struct SetWindowAlpha {
    static constexpr std::string_view name = "SetWindowAlpha", library = carbonLibrary;
    using Signature = std::int32_t(NativeWindow* window, float alpha);
};
struct ChangeWindowAttributes {
    static constexpr std::string_view name = "ChangeWindowAttributes", library = carbonLibrary;
    using Signature = std::int32_t(NativeWindow* window, std::uint32_t set, std::uint32_t clear);
};
struct IsWindowCollapsed {
    static constexpr std::string_view name = "IsWindowCollapsed", library = carbonLibrary;
    using Signature = bool(NativeWindow* window);
};
struct UpdateCollapsedWindowDockTile {
    static constexpr std::string_view name = "UpdateCollapsedWindowDockTile",
                                      library = carbonLibrary;
    using Signature = std::int32_t(NativeWindow* window);
};
struct DisableScreenUpdates {
    static constexpr std::string_view name = "DisableScreenUpdates", library = carbonLibrary;
    using Signature = std::int32_t();
};
struct EnableScreenUpdates {
    static constexpr std::string_view name = "EnableScreenUpdates", library = carbonLibrary;
    using Signature = std::int32_t();
};
struct SizeWindow {
    static constexpr std::string_view name = "SizeWindow", library = carbonLibrary;
    using Signature = void(NativeWindow* window, std::int32_t width, std::int32_t height,
                           std::int32_t update);
};
struct DragWindow {
    static constexpr std::string_view name = "DragWindow", library = carbonLibrary;
    using Signature = void(NativeWindow* window, platform::Point start,
                           const platform::Rect* bounds);
};

/// Shortens `text` in place so that it fits `width` pixels in the given font; code 0x4000 takes
/// from the middle, 0 from the end. `truncated` may be nil.
struct TruncateThemeText {
    static constexpr std::string_view name = "TruncateThemeText", library = carbonLibrary;
    using Signature = std::int32_t(std::string& text, std::uint16_t font, std::uint32_t state,
                                   std::int32_t width, std::uint32_t code, bool* truncated);
};

// Volumes and file references. Results are status codes, 0 for success.
struct FSGetVolumeInfo {
    static constexpr std::string_view name = "FSGetVolumeInfo", library = carbonLibrary;
    using Signature = std::int32_t(std::int32_t volume, std::uint32_t index,
                                   std::int32_t* actualVolume, std::uint32_t whichInfo,
                                   std::byte* info, std::u16string* volumeName,
                                   std::byte* rootDirectory);
};
struct FSCopyDiskIDForVolume {
    static constexpr std::string_view name = "FSCopyDiskIDForVolume", library = carbonLibrary;
    using Signature = std::int32_t(std::int32_t volume, StringHandle* diskID);
};
struct FSMakeFSRefUnicode {
    static constexpr std::string_view name = "FSMakeFSRefUnicode", library = carbonLibrary;
    using Signature = std::int32_t(const std::byte* parent, std::uint32_t nameLength,
                                   const char16_t* name, std::uint32_t encodingHint,
                                   std::byte* reference);
};
struct FSRefMakePath {
    static constexpr std::string_view name = "FSRefMakePath", library = carbonLibrary;
    using Signature = std::int32_t(const std::byte* reference, char* path, std::uint32_t size);
};
/// The framework's own list of volumes: those that are mounted now.
struct MountedVolumes {
    static constexpr std::string_view name = "MountedVolumes", library = systemLibrary;
    using Signature = std::vector<platform::MountedVolume>();
};

// Power sources.
struct IOPSCopyPowerSourcesInfo {
    static constexpr std::string_view name = "IOPSCopyPowerSourcesInfo", library = ioKitLibrary;
    using Signature = BlobHandle();
};
struct IOPSGetProvidingPowerSourceType {
    static constexpr std::string_view name = "IOPSGetProvidingPowerSourceType",
                                      library = ioKitLibrary;
    using Signature = StringHandle(BlobHandle blob);
};

// CoreFoundation strings behind handles. The conversion is asked for in two libraries.
struct CFStringGetCString {
    static constexpr std::string_view name = "CFStringGetCString", library = coreFoundationLibrary;
    using Signature = bool(StringHandle string, char* buffer, std::int32_t size,
                           std::uint32_t encoding);
};
struct CFStringGetCStringOfCarbon {
    static constexpr std::string_view name = "CFStringGetCString", library = carbonLibrary;
    using Signature = CFStringGetCString::Signature;
};
/// Releases what a handle stands for; one that nobody owns, or 0, is left alone.
struct CFRelease {
    static constexpr std::string_view name = "CFRelease", library = carbonLibrary;
    using Signature = void(std::int32_t reference);
};

} // namespace kqu::functions

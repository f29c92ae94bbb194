#pragma once

#include "platform/interfaces/MountedVolume.h"
#include "platform/interfaces/NativeWindow.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The descriptions of all functions that are reached by name: one type each, with the name and the
/// library under which it is asked for and the form in which it is called.
namespace kqu::functions {

using platform::NativeWindow;

/// A text that can be a template's argument.
template <std::size_t size>
struct Name {
    std::array<char, size> text{};
    constexpr Name(const char (&literal)[size]) { std::copy_n(literal, size, text.begin()); }
};

/// The description of one function.
template <Name functionName, Name libraryName, class Form>
struct Function {
    static constexpr std::string_view name = functionName.text.data();
    static constexpr std::string_view library = libraryName.text.data();
    using Signature = Form;
};

inline constexpr Name system = "System.framework";
inline constexpr Name carbon = "Carbon.framework";
inline constexpr Name ioKit = "IOKit.framework";
inline constexpr Name coreFoundation = "CoreFoundation.framework";

/// A reference of 32 bits to something that the platform keeps: 0 is none.
using StreamHandle = std::int32_t;
using StringHandle = std::int32_t;
using BlobHandle = std::int32_t;

// The C library's streams on commands. Streams travel as handles of 32 bits.
using popen = Function<"popen", system, StreamHandle(const std::string& command, const char* mode)>;
using feof = Function<"feof", system, int(StreamHandle stream)>;
using fread =
    Function<"fread", system,
             std::size_t(void* block, std::size_t size, std::size_t count, StreamHandle stream)>;
using ferror = Function<"ferror", system, int(StreamHandle stream)>;
using pclose = Function<"pclose", system, int(StreamHandle stream)>;

// Identity and file status.
/// Writes the 88-byte record with the owner's 32-bit id at byte offset 12; 0 for success.
using lstat =
    Function<"lstat", system, int(const std::string& path, std::byte* record, std::size_t size)>;
using seteuid = Function<"seteuid", system, int(std::uint32_t user)>;
using setuid = Function<"setuid", system, int(std::uint32_t user)>;
using getuid = Function<"getuid", system, std::uint32_t()>;

/// Asks about the system, "sysv" for its version in the form 0xMMmb; true for success.
using Gestalt = Function<"Gestalt", carbon, bool(std::string_view selector, std::int32_t& value)>;

// Windows. Results are status codes, 0 for success.
using SetWindowAlpha =
    Function<"SetWindowAlpha", carbon, std::int32_t(NativeWindow* window, float alpha)>;
using ChangeWindowAttributes =
    Function<"ChangeWindowAttributes", carbon,
             std::int32_t(NativeWindow* window, std::uint32_t set, std::uint32_t clear)>;
using IsWindowCollapsed = Function<"IsWindowCollapsed", carbon, bool(NativeWindow* window)>;
using UpdateCollapsedWindowDockTile =
    Function<"UpdateCollapsedWindowDockTile", carbon, std::int32_t(NativeWindow* window)>;
using DisableScreenUpdates = Function<"DisableScreenUpdates", carbon, std::int32_t()>;
using EnableScreenUpdates = Function<"EnableScreenUpdates", carbon, std::int32_t()>;
using SizeWindow = Function<"SizeWindow", carbon,
                            void(NativeWindow* window, std::int32_t width, std::int32_t height,
                                 std::int32_t update)>;
using DragWindow =
    Function<"DragWindow", carbon,
             void(NativeWindow* window, platform::Point start, const platform::Rect* bounds)>;

/// Shortens `text` in place so that it fits `width` pixels in the given font; code 0x4000 takes
/// from the middle, 0 from the end. `truncated` may be nil.
using TruncateThemeText =
    Function<"TruncateThemeText", carbon,
             std::int32_t(std::string& text, std::uint16_t font, std::uint32_t state,
                          std::int32_t width, std::uint32_t code, bool* truncated)>;

// Volumes and file references. Results are status codes, 0 for success.
using FSGetVolumeInfo =
    Function<"FSGetVolumeInfo", carbon,
             std::int32_t(std::int32_t volume, std::uint32_t index, std::int32_t* actualVolume,
                          std::uint32_t whichInfo, std::byte* info, std::u16string* volumeName,
                          std::byte* rootDirectory)>;
using FSCopyDiskIDForVolume = Function<"FSCopyDiskIDForVolume", carbon,
                                       std::int32_t(std::int32_t volume, StringHandle* diskID)>;
using FSMakeFSRefUnicode =
    Function<"FSMakeFSRefUnicode", carbon,
             std::int32_t(const std::byte* parent, std::uint32_t nameLength, const char16_t* name,
                          std::uint32_t encodingHint, std::byte* reference)>;
using FSRefMakePath =
    Function<"FSRefMakePath", carbon,
             std::int32_t(const std::byte* reference, char* path, std::uint32_t size)>;
/// The framework's own list of volumes: those that are mounted now.
using MountedVolumes = Function<"MountedVolumes", system, std::vector<platform::MountedVolume>()>;

// Power sources.
using IOPSCopyPowerSourcesInfo = Function<"IOPSCopyPowerSourcesInfo", ioKit, BlobHandle()>;
using IOPSGetProvidingPowerSourceType =
    Function<"IOPSGetProvidingPowerSourceType", ioKit, StringHandle(BlobHandle blob)>;

// CoreFoundation strings behind handles. The conversion is asked for in two libraries.
using CFStringGetCString =
    Function<"CFStringGetCString", coreFoundation,
             bool(StringHandle string, char* buffer, std::int32_t size, std::uint32_t encoding)>;
using CFStringGetCStringOfCarbon =
    Function<"CFStringGetCString", carbon, CFStringGetCString::Signature>;
/// Releases what a handle stands for; one that nobody owns, or 0, is left alone.
using CFRelease = Function<"CFRelease", carbon, void(std::int32_t reference)>;

} // namespace kqu::functions

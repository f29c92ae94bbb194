#pragma once

#include <cstdint>
#include <string>

namespace kqu::platform {

/// The reference number of the volume that the whole tree of files hangs on, mounted at "/". It is
/// valid always, also where "/" is on no block device.
inline constexpr std::int32_t bootVolume = -100;

/// A mounted volume as it is shown to the user.
struct MountedVolume {
    /// Never 0, and the same for as long as the volume stays mounted.
    std::int32_t reference = 0;
    std::string name;
    std::string mountPoint;
};

} // namespace kqu::platform

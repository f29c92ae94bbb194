#include "post/kqu-run/tools/Destination.h"

#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"

#include <cstdlib>
#include <filesystem>

namespace kqu::run {

std::string LocalDestination(const std::string& path) {
    std::error_code failure;
    std::string whole = std::filesystem::weakly_canonical(path, failure).string();
    if (failure || whole.empty())
        return path;
    // A relative path of which nothing is there yet stays relative.
    if (!whole.starts_with('/'))
        whole = std::filesystem::absolute(whole, failure).lexically_normal().string();
    while (whole.size() > 1 && whole.ends_with('/'))
        whole.pop_back();
    const auto volume = VolumeOfFile(whole);
    return volume && volume->mountPoint == whole ? volume->name : whole;
}

std::string Destination(const std::string& place) {
    const char* home = std::getenv("HOME");
    const std::string name = PlaceName(place, home != nullptr ? home : "~");
    const bool isNamedLocal = place.starts_with("local:") || place.starts_with("file://");
    if (name.empty() || (IsElsewhere(place) && !isNamedLocal))
        return name;
    return LocalDestination(name);
}

} // namespace kqu::run

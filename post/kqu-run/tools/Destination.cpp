#include "post/kqu-run/tools/Destination.h"

#include "post/kqu-run/Naming.h"
#include "post/kqu-run/Volumes.h"

#include <cstdlib>
#include <filesystem>

namespace kqu::run {

Name LocalDestination(const std::string& path) {
    std::error_code failure;
    std::string whole = std::filesystem::weakly_canonical(path, failure).string();
    if (failure || whole.empty())
        return {path, {}};
    // A relative path of which nothing is there yet stays relative.
    if (!whole.starts_with('/'))
        whole = std::filesystem::absolute(whole, failure).lexically_normal().string();
    while (whole.size() > 1 && whole.ends_with('/'))
        whole.pop_back();
    // What is not there yet will be on the volume of the folder above it.
    std::filesystem::path nearest = whole;
    while (!std::filesystem::exists(nearest, failure) && nearest.has_relative_path())
        nearest = nearest.parent_path();
    const auto volume = VolumeOfFile(nearest.string());
    const std::string open = volume ? volume->name : "";
    return {volume && volume->mountPoint == whole ? open : whole, open};
}

Name Destination(const std::string& place) {
    const char* home = std::getenv("HOME");
    const Name name = PlaceName(place, home != nullptr ? home : "~");
    const bool isNamedLocal = place.starts_with("local:") || place.starts_with("file://");
    if (name.full.empty() || (IsElsewhere(place) && !isNamedLocal))
        return name;
    return LocalDestination(name.full);
}

} // namespace kqu::run

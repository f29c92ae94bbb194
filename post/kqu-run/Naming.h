#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kqu::run {

/// A name for a row, and what of it any user may see: a volume or a host, but no path and no name
/// of a file.
struct Name {
    std::string full;
    std::string open;
};

[[nodiscard]] inline Name OpenName(const std::string& name) {
    return {name, name};
}

/// A place as a person would say it, from a path or from the ways in which rsync, restic and borg
/// name places on other machines: "/data on nas" for "me@nas:/data", "sftp:me@nas:/data" or
/// "ssh://me@nas:22/data". Names of users and passwords are left out; `home` stands for a ~ at the
/// beginning.
[[nodiscard]] Name PlaceName(std::string_view place, std::string_view home);

/// Whether the place is on another machine.
[[nodiscard]] bool IsElsewhere(std::string_view place);

/// The last component of a path, or "/".
[[nodiscard]] std::string LastComponent(std::string_view path);

/// Several names in one: "a", "a and b" or "a and 3 more".
[[nodiscard]] std::string Joined(std::span<const std::string> names);

} // namespace kqu::run

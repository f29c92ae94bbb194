#include "post/kqu-run/Naming.h"

#include "post/posting/Text.h"

namespace kqu::run {

namespace {
using post::Pattern;

constexpr const char* url = "^[^/]*://";
/// "user@host:path", and rsync's "host::module".
constexpr const char* onHost = "^([^/:]*@)?(\\[[^]/]*\\]|[^/:]+)::?(.*)$";

Name OnHost(std::string_view path, std::string_view host) {
    const std::string on(host.starts_with('[') ? host.substr(1, host.size() - 2) : host);
    return {path.empty() || path == "/" ? on : std::string(path) + " on " + on, on};
}

/// What is behind a question mark may be a key.
Name UrlName(std::string_view place) {
    static const Pattern parts("^[^/]*://([^/]*@)?(\\[[^]]*\\]|[^/:?]*)(:[0-9]*)?(/[^?]*[^/?])?");
    const auto found = parts.In(place);
    return OnHost(found[4], found[2]);
}

/// A place on a service: "bucket on s3.example.org", "bucket:path" as it stands.
Name ServiceName(std::string_view place) {
    static const Pattern withOptions("^([^,]*),.*:"); // ":sftp,user=me,pass=secret:path"
    static const Pattern user("^[^/]*@");
    static const Pattern hostAndPath("^([^/:]*)/([^:]*)$");
    if (!Pattern(url).In(place).empty())
        return UrlName(place);
    if (const auto found = withOptions.In(place); !found.empty())
        place = found[1];
    if (const auto found = user.In(place); !found.empty())
        place.remove_prefix(found[0].size());
    const auto found = hostAndPath.In(place);
    return found.empty() ? Name{std::string(place), {}} : OnHost(found[2], found[1]);
}
} // namespace

bool IsElsewhere(std::string_view place) {
    return !Pattern(url).In(place).empty() || !Pattern(onHost).In(place).empty();
}

Name PlaceName(std::string_view place, std::string_view home) {
    static const Pattern service("^(rest|s3|b2|azure|gs|swift|rclone):(.*)$");
    static const Pattern plain("^(file://|local:|sftp:)(.*)$");
    // A path behind "host:" may hold an @ as well: it is kept where it begins at the root, and else
    // taken for the end of a password.
    static const Pattern password("^[^]/:@[]+:[^/:].*@(.*)$");
    if (const auto found = service.In(place); !found.empty())
        return ServiceName(found[2]);
    if (const auto found = plain.In(place); !found.empty() && !place.starts_with("sftp://")) {
        place = found[2];
        if (!found[1].starts_with("sftp"))
            return {std::string(place), {}};
    }
    if (!Pattern(url).In(place).empty())
        return UrlName(place);
    if (const auto found = password.In(place); !found.empty())
        place = found[1];
    if (const auto found = Pattern(onHost).In(place); !found.empty())
        return OnHost(found[3], found[2]);
    if (place == "~" || place.starts_with("~/"))
        return {std::string(home) + std::string(place.substr(1)), {}};
    return {std::string(place), {}};
}

std::string LastComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    const std::size_t slash = path.rfind('/');
    return std::string(
        path.size() == 1 || slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string Joined(std::span<const std::string> names) {
    if (names.empty())
        return {};
    if (names.size() == 1)
        return names[0];
    if (names.size() == 2)
        return names[0] + " and " + names[1];
    return names[0] + " and " + std::to_string(names.size() - 1) + " more";
}

} // namespace kqu::run

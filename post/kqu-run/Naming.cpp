#include "post/kqu-run/Naming.h"

#include <algorithm>
#include <charconv>

namespace kqu::run {

namespace {
/// Cuts off what comes before the mark, the mark included; false if there is none.
bool CutBefore(std::string_view& text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos)
        return false;
    text.remove_prefix(at + mark.size());
    return true;
}

/// The host of "user:password@host:port".
std::string_view HostOf(std::string_view authority) {
    const std::size_t at = authority.rfind('@');
    if (at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    if (authority.starts_with('['))
        return authority.substr(1, std::max<std::size_t>(1, authority.find(']')) - 1);
    return authority.substr(0, authority.find(':'));
}

Name OnHost(std::string_view path, std::string_view host) {
    const std::string on(host);
    return {path.empty() || path == "/" ? on : std::string(path) + " on " + on, on};
}

Name UrlName(std::string_view url) {
    // What is behind a question mark may be a key.
    if (url.starts_with("http"))
        url = url.substr(0, url.find('?'));
    CutBefore(url, "://");
    const std::size_t slash = std::min(url.find('/'), url.size());
    std::string_view path = url.substr(slash);
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return OnHost(path, HostOf(url.substr(0, slash)));
}

/// Where "host:path" is divided; npos for a plain path.
std::size_t HostEnd(std::string_view place) {
    std::size_t from = 0;
    const std::size_t slash = place.find('/');
    const std::size_t bracket = place.find(']');
    if (bracket < slash && place.find('[') < bracket)
        from = bracket;
    const std::size_t colon = place.find(':', from);
    return colon < slash && colon > 0 ? colon : std::string_view::npos;
}

std::string SchemeOf(std::string_view place) {
    for (const std::string_view scheme :
         {"sftp", "rest", "s3", "b2", "azure", "gs", "swift", "rclone", "local"})
        if (place.starts_with(std::string(scheme) + ":"))
            return std::string(scheme);
    return {};
}

/// A place on a service: "bucket on s3.example.org", "bucket:path" as it stands.
Name ServiceName(std::string_view place) {
    if (place.find("://") != std::string_view::npos)
        return UrlName(place);
    // ":sftp,user=me,pass=secret:path"
    const std::size_t path = place.rfind(':');
    if (const std::size_t options = place.find(','); path != place.npos && options < path)
        place = place.substr(0, options);
    const std::size_t user = place.find('@');
    if (user < place.find('/'))
        place.remove_prefix(user + 1);
    const std::size_t slash = place.find('/');
    const bool hasHost =
        slash != std::string_view::npos && place.find(':') == std::string_view::npos;
    return hasHost ? OnHost(place.substr(slash + 1), place.substr(0, slash))
                   : Name{std::string(place), {}};
}

/// The place without "user:password@" before its host. A path behind "host:" may hold an @ as well:
/// it is kept where it begins at the root, and else taken for the end of a password.
std::string_view WithoutPassword(std::string_view place) {
    const std::size_t colon = place.find(':');
    const std::size_t at = place.rfind('@');
    const bool isPassword = at != std::string_view::npos && colon < place.find('@') &&
                            place[colon + 1] != '/' && place[colon + 1] != ':';
    return isPassword ? place.substr(at + 1) : place;
}
} // namespace

bool IsElsewhere(std::string_view place) {
    return place.find("://") < place.find('/') || HostEnd(place) != std::string_view::npos;
}

Name PlaceName(std::string_view place, std::string_view home) {
    const std::string scheme = SchemeOf(place);
    if (!scheme.empty()) {
        place.remove_prefix(scheme.size() + 1);
        if (scheme != "local" && scheme != "sftp")
            return ServiceName(place);
        if (scheme == "sftp" && place.starts_with("//"))
            return UrlName("sftp:" + std::string(place));
    }
    if (place.starts_with("file://"))
        return {std::string(place.substr(7)), {}};
    if (place.find("://") < place.find('/'))
        return UrlName(place);
    if (HostEnd(place) != std::string_view::npos)
        place = WithoutPassword(place);
    if (const std::size_t end = HostEnd(place); end != std::string_view::npos) {
        const std::string_view host = HostOf(place.substr(0, end));
        std::string_view path = place.substr(end + 1);
        if (path.starts_with(':'))
            path.remove_prefix(1);
        return OnHost(path, host);
    }
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

std::string WithoutEscapes(std::string_view name) {
    std::string plain;
    while (!name.empty()) {
        unsigned code = 0;
        if (name.starts_with("\\x") && name.size() >= 4 &&
            std::from_chars(name.data() + 2, name.data() + 4, code, 16).ptr == name.data() + 4) {
            plain += static_cast<char>(code);
            name.remove_prefix(4);
        } else {
            plain += name.front();
            name.remove_prefix(1);
        }
    }
    return plain;
}

} // namespace kqu::run

#include "platform/functions/Functions.h"
#include "platform/functions/Identity.h"
#include "platform/functions/LinuxFunctions.h"

#include <cstring>
#include <sys/stat.h>
#include <systemd/sd-login.h>
#include <unistd.h>

namespace kqu::platform {

namespace {
constexpr int success = 0;
constexpr int failure = -1;
constexpr std::size_t ownerOffset = 12;
constexpr std::string_view versionSelector = "sysv";
/// In the form 0xMMmb: the newest that the version flags distinguish.
constexpr std::int32_t systemVersion = 0x1068;

/// On Linux the console's device belongs to root at all times; the login manager knows the user.
uid_t ConsoleOwner(uid_t owner) {
    uid_t user = owner;
    if (owner == 0 && sd_seat_get_active("seat0", nullptr, &user) < 0)
        return owner;
    return user;
}

int WriteStatus(const std::string& path, std::byte* record, std::size_t size) {
    struct stat status {};
    if (size < ownerOffset + sizeof status.st_uid || ::lstat(path.c_str(), &status) != 0)
        return failure;
    const uid_t owner = path == "/dev/console" ? ConsoleOwner(status.st_uid) : status.st_uid;
    std::memcpy(record + ownerOffset, &owner, sizeof owner);
    return success;
}
} // namespace

void RegisterIdentityFunctions(FunctionTable& table) {
    table.Set<functions::lstat>(WriteStatus);
    table.Set<functions::seteuid>(
        [](std::uint32_t user) { return BecomeEffectively(user) ? success : failure; });
    table.Set<functions::setuid>(
        [](std::uint32_t user) { return BecomeForGood(user) ? success : failure; });
    table.Set<functions::getuid>([] { return ::getuid(); });
    table.Set<functions::Gestalt>([](std::string_view selector, std::int32_t& value) {
        if (selector != versionSelector)
            return false;
        value = systemVersion;
        return true;
    });
}

} // namespace kqu::platform

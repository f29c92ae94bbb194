#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <grp.h>
#include <linux/capability.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

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

constexpr uid_t root = 0;
/// System calls take it for "leave that one alone".
constexpr auto noUser = static_cast<uid_t>(-1);
/// The group of the account "nobody" and of everything that the kernel can't map.
constexpr gid_t groupOfNobody = 65534;

struct UserIds {
    uid_t real = noUser;
    uid_t effective = noUser;
    uid_t saved = noUser;
    [[nodiscard]] bool Contain(uid_t user) const {
        return real == user || effective == user || saved == user;
    }
};

struct Groups {
    gid_t real = groupOfNobody;
    gid_t effective = groupOfNobody;
    gid_t saved = groupOfNobody;
    std::vector<gid_t> supplementary;
};

UserIds CurrentIds() {
    UserIds ids;
    getresuid(&ids.real, &ids.effective, &ids.saved);
    return ids;
}

Groups CurrentGroups() {
    Groups groups;
    getresgid(&groups.real, &groups.effective, &groups.saved);
    groups.supplementary.resize(NGROUPS_MAX);
    const int count = getgroups(NGROUPS_MAX, groups.supplementary.data());
    groups.supplementary.resize(static_cast<std::size_t>(std::max(count, 0)));
    return groups;
}

Groups GroupsOf(uid_t user) {
    Groups groups;
    const passwd* account = getpwuid(user);
    if (account == nullptr)
        return groups;
    groups.real = groups.effective = groups.saved = account->pw_gid;
    const std::string name = account->pw_name;
    int count = NGROUPS_MAX;
    groups.supplementary.resize(NGROUPS_MAX);
    if (getgrouplist(name.c_str(), groups.real, groups.supplementary.data(), &count) < 0)
        count = NGROUPS_MAX;
    groups.supplementary.resize(static_cast<std::size_t>(count));
    return groups;
}

bool TakeOn(const Groups& groups) {
    return setgroups(groups.supplementary.size(), groups.supplementary.data()) == 0 &&
           setresgid(groups.real, groups.effective, groups.saved) == 0;
}

/// A process can be set to keep capabilities over a change of its user; those go as well.
void DropCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
    syscall(SYS_capset, &header, none.data());
}

bool SettleOn(uid_t user, const UserIds& permitted) {
    if (user == noUser || !permitted.Contain(user) || setresuid(user, user, user) != 0)
        return false;
    if (user != root)
        DropCapabilities();
    return true;
}

/// Takes on the user as the effective one only, as seteuid(2) does.
bool BecomeEffectively(uid_t user) {
    return user != noUser && ::seteuid(user) == 0;
}

/// Becomes the user for good. True for success; otherwise nothing has changed.
///
/// The ids that a process may settle on without privileges are those that it already has as its
/// real, effective or saved one; all three become that user's. A process that has root as one of
/// the three (if only as the real and saved one, as seteuid leaves it) also takes on the user's
/// group and supplementary groups, as they are in the account database, and lets all capabilities
/// go: nothing that root had is left, and root can't be regained. Only where setting groups is
/// forbidden to root itself do the groups stay. A user without an account gets no
/// supplementary groups and the group of nobody, since a group of the same number may well be
/// somebody's. To settle on root is to stay root, groups and all.
bool BecomeForGood(uid_t user) {
    const UserIds before = CurrentIds();
    if (!before.Contain(root) || user == root)
        return SettleOn(user, before);
    // Groups are root's to give, and root may be the effective user no longer.
    if (seteuid(root) != 0)
        return false;
    const Groups groups = CurrentGroups();
    // Where groups can't be set (a container may forbid it) keeping them is the lesser evil: root
    // itself must go in any case.
    static_cast<void>(TakeOn(GroupsOf(user)));
    if (SettleOn(user, {user, root, root}))
        return true;
    static_cast<void>(TakeOn(groups));
    static_cast<void>(BecomeEffectively(before.effective));
    return false;
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

#include "post/posting/UserCommand.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <linux/keyctl.h>
#include <poll.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kqu::post {

namespace {
/// The group of the account "nobody", for a user that no account describes.
constexpr gid_t groupOfNobody = 65534;
constexpr int cannotBeRun = 127;

struct Account {
    uid_t user = 0;
    gid_t group = groupOfNobody;
    std::vector<gid_t> groups;
};

Account AccountOf(uid_t user) {
    Account account;
    account.user = user;
    std::vector<char> texts(std::size_t{1} << 16);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(user, &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return account;
    account.group = entry.pw_gid;
    int count = NGROUPS_MAX;
    account.groups.resize(NGROUPS_MAX);
    if (getgrouplist(entry.pw_name, entry.pw_gid, account.groups.data(), &count) < 0)
        count = 0;
    account.groups.resize(static_cast<std::size_t>(count));
    return account;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Leaves behind what the user must not get at: the terminal, open files, keys, the folder, and
/// what the caller has done to signals. Only system calls.
bool LeaveCaller() {
    setsid();
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    const int nowhere = open("/dev/null", O_RDWR);
    // The session keyring of root.
    syscall(SYS_keyctl, KEYCTL_JOIN_SESSION_KEYRING, nullptr);
    return nowhere >= 0 && dup2(nowhere, 0) == 0 && dup2(nowhere, 1) == 1 &&
           dup2(nowhere, 2) == 2 && close_range(3, UINT_MAX, 0) == 0 && chdir("/") == 0 &&
           sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

/// Real, effective and saved ids, and nothing to come back by. Only system calls.
bool Become(const Account& account) {
    prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    return setgroups(account.groups.size(), account.groups.data()) == 0 &&
           setresgid(account.group, account.group, account.group) == 0 &&
           setresuid(account.user, account.user, account.user) == 0;
}

/// Waits until the child has ended; kills it at the deadline.
void Await(pid_t child, std::chrono::steady_clock::time_point deadline) {
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    pollfd ended{handle, POLLIN, 0};
    int result = -1;
    do {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        result = poll(&ended, 1, static_cast<int>(std::max<long>(left.count(), 0)));
    } while (result < 0 && errno == EINTR);
    if (result <= 0 || handle < 0)
        kill(child, SIGKILL);
    if (handle >= 0)
        close(handle);
}
} // namespace

bool RunAs(uid_t user, std::vector<std::string> command, std::vector<std::string> environment,
           std::chrono::steady_clock::time_point deadline) {
    const Account account = AccountOf(user);
    const std::vector<char*> arguments = Pointers(command);
    const std::vector<char*> variables = Pointers(environment);
    const pid_t child = fork();
    if (child == 0) {
        if (LeaveCaller() && Become(account))
            execve(arguments[0], arguments.data(), variables.data());
        _exit(cannotBeRun);
    }
    if (child < 0)
        return false;
    Await(child, deadline);
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = waitpid(child, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    return reaped == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kqu::post

#include "post/posting/UserCommand.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <linux/keyctl.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kqu::post {

namespace {
/// The group of the account "nobody", for a user that no account describes.
constexpr gid_t groupOfNobody = 65534;
constexpr int cannotBeRun = 127;
constexpr const char* timeout = "/usr/bin/timeout";
constexpr const char* setpriv = "/usr/bin/setpriv";

/// What a user gets from the system at most, where root may have more.
constexpr std::array<std::pair<__rlimit_resource, rlim_t>, 5> limits{{{RLIMIT_NICE, 0},
                                                                      {RLIMIT_RTPRIO, 0},
                                                                      {RLIMIT_CORE, 0},
                                                                      {RLIMIT_MEMLOCK, 8U << 20U},
                                                                      {RLIMIT_NOFILE, 1024}}};

std::vector<std::string> PrefixFor(uid_t user, std::chrono::milliseconds most) {
    std::vector<char> texts(std::size_t{1} << 16);
    passwd entry{};
    passwd* account = nullptr;
    getpwuid_r(user, &entry, texts.data(), texts.size(), &account);
    const gid_t group = account != nullptr ? account->pw_gid : groupOfNobody;
    return {timeout,
            "--signal=KILL",
            std::to_string(std::chrono::duration<double>(most).count()),
            setpriv,
            "--reuid=" + std::to_string(user),
            "--regid=" + std::to_string(group),
            account != nullptr ? "--init-groups" : "--clear-groups",
            "--inh-caps=-all",
            "--no-new-privs",
            "--"};
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

void Lower(__rlimit_resource resource, rlim_t most) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0)
        return;
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = std::min(limit.rlim_cur, most);
    setrlimit(resource, &limit);
}

bool CloseAllBut(std::initializer_list<int> kept) {
    unsigned first = STDERR_FILENO + 1;
    for (const int number : kept) { // in ascending order
        const auto next = static_cast<unsigned>(number);
        if (next > first && close_range(first, next - 1, 0) != 0)
            return false;
        first = next + 1;
    }
    return close_range(first, UINT_MAX, 0) == 0;
}
} // namespace

bool LeaveCaller(std::initializer_list<int> kept) {
    setsid();
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
    for (const auto& [resource, most] : limits)
        Lower(resource, most);
    umask(S_IWGRP | S_IWOTH);
    setpriority(PRIO_PROCESS, 0, 0);
    // The session keyring of root.
    syscall(SYS_keyctl, KEYCTL_JOIN_SESSION_KEYRING, nullptr);
    sigset_t none;
    sigemptyset(&none);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    return nowhere >= 0 && dup2(nowhere, 0) == 0 && dup2(nowhere, 1) == 1 &&
           dup2(nowhere, 2) == 2 && CloseAllBut(kept) && chdir("/") == 0 &&
           sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

bool RunAs(uid_t user, const std::vector<std::string>& command, std::chrono::milliseconds most) {
    // To the system calls that change a user it means "leave as it is".
    if (user == static_cast<uid_t>(-1))
        return false;
    std::vector<std::string> whole = PrefixFor(user, most);
    whole.insert(whole.end(), command.begin(), command.end());
    const std::vector<char*> arguments = Pointers(whole);
    const std::string folder = "/run/user/" + std::to_string(user);
    std::vector<std::string> environment{"XDG_RUNTIME_DIR=" + folder,
                                         "DBUS_SESSION_BUS_ADDRESS=unix:path=" + folder + "/bus"};
    const std::vector<char*> variables = Pointers(environment);
    const pid_t child = fork();
    if (child == 0) {
        if (LeaveCaller())
            execve(arguments[0], arguments.data(), variables.data());
        _exit(cannotBeRun);
    }
    if (child < 0)
        return false;
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = waitpid(child, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    return reaped == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kqu::post

#include "post/posting/UserCommand.h"

#include "platform/CDeleter.h"
#include "post/posting/Text.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/keyctl.h>
#include <pwd.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <systemd/sd-login.h>
#include <unistd.h>

namespace kqu::post {

namespace {
/// The group of the account "nobody", for a user that no account describes.
constexpr gid_t groupOfNobody = 65534;
constexpr int didNotRun = -1;

std::vector<std::string> PrefixFor(uid_t user, std::chrono::milliseconds most) {
    passwd account{};
    passwd* found = nullptr;
    std::array<char, 16384> texts{};
    getpwuid_r(user, &account, texts.data(), texts.size(), &found);
    const gid_t group = found != nullptr ? account.pw_gid : groupOfNobody;
    // The limits are what a user gets from the system, where root may have more.
    const auto words = Words("/usr/bin/choom -n 0 -- /usr/bin/ionice -c none /usr/bin/prlimit "
                             "--nice=0 --rtprio=0 --core=0 --memlock=8388608 --nofile=1024 "
                             "/usr/bin/setpriv --inh-caps=-all --no-new-privs");
    std::vector<std::string> prefix{"/usr/bin/timeout", "--signal=KILL",
                                    std::to_string(std::chrono::duration<double>(most).count())};
    prefix.insert(prefix.end(), words.begin(), words.end());
    prefix.insert(prefix.end(),
                  {"--reuid=" + std::to_string(user), "--regid=" + std::to_string(group),
                   found != nullptr ? "--init-groups" : "--clear-groups", "--"});
    return prefix;
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

std::optional<Session> SessionAtSeat() {
    char *name = nullptr, *kind = nullptr, *state = nullptr;
    uid_t user = 0;
    if (sd_seat_get_active("seat0", &name, &user) < 0)
        return std::nullopt;
    sd_session_get_class(name, &kind);
    sd_session_get_state(name, &state);
    const platform::CPointer<char, std::free> ownName(name), ownKind(kind), ownState(state);
    // The session's type is not asked for: one that was begun with startx counts as a terminal's,
    // and whether there is a display the user's own service manager knows.
    if (kind == nullptr || state == nullptr || std::strcmp(kind, "user") != 0 ||
        std::strcmp(state, "active") != 0)
        return std::nullopt;
    return Session{name, user};
}

bool LeaveCaller(std::initializer_list<int> kept) {
    setsid();
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
    umask(S_IWGRP | S_IWOTH);
    const sched_param none{};
    sched_setscheduler(0, SCHED_OTHER, &none);
    setpriority(PRIO_PROCESS, 0, 0);
    // The session keyring of root.
    syscall(SYS_keyctl, KEYCTL_JOIN_SESSION_KEYRING, nullptr);
    sigset_t unblocked;
    sigemptyset(&unblocked);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    return nowhere >= 0 && dup2(nowhere, 0) == 0 && dup2(nowhere, 1) == 1 &&
           dup2(nowhere, 2) == 2 && CloseAllBut(kept) && chdir("/") == 0 &&
           sigprocmask(SIG_SETMASK, &unblocked, nullptr) == 0;
}

int RunAs(uid_t user, const std::vector<std::string>& command, std::chrono::milliseconds most) {
    // To the system calls that change a user it means "leave as it is".
    if (user == static_cast<uid_t>(-1))
        return didNotRun;
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
        _exit(127);
    }
    if (child < 0)
        return didNotRun;
    int status = 0;
    const auto reaped = TEMP_FAILURE_RETRY(waitpid(child, &status, 0));
    return reaped == child && WIFEXITED(status) ? WEXITSTATUS(status) : didNotRun;
}

} // namespace kqu::post

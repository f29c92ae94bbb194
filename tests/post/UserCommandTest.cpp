#include "post/posting/UserCommand.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace kqu::post {
namespace {

using namespace std::chrono_literals;

constexpr uid_t nobody = 65534;

bool RunScript(const std::string& script, std::chrono::milliseconds patience = 20s) {
    return RunAs(nobody, {"/bin/sh", "-c", script}, patience) == 0;
}

TEST(UserCommand, TheProgramIsTheUsersCompletelyAndItsTimeIsBounded) {
    if (geteuid() != 0) {
        std::puts("NOT RUN: only root can become another user");
        return;
    }
    // Something of the caller's for each thing that must not be passed on.
    ASSERT_EQ(dup2(0, 99), 99);
    const gid_t groups[] = {4, 27};
    EXPECT_EQ(setgroups(2, groups), 0);
    setenv("SECRET", "known", 1);
    const mode_t mask = umask(0);
    std::ofstream("/proc/self/oom_score_adj") << -500;
    rlimit raised{20, 20}, before{};
    getrlimit(RLIMIT_NICE, &before);
    setrlimit(RLIMIT_NICE, &raised);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    std::thread([&] {
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        const sched_param real{1};
        sched_setscheduler(0, SCHED_FIFO, &real);
        syscall(SYS_ioprio_set, 1, 0, 2 << 13); // "best effort" instead of none
        for (const char* script : {
                 "test \"$(grep ^Uid: /proc/self/status | tr -dc '0-9 \\t' | xargs)\" = "
                 "'65534 65534 65534 65534'",
                 "test \"$(id -G)\" = 65534",
                 "! grep -E '^Cap(Inh|Prm|Eff|Amb):.*[1-9a-f]' /proc/self/status",
                 "test ! -e /proc/$$/fd/99",
                 "test \"$(readlink /proc/$$/fd/0)\" = /dev/null",
                 "test \"$(pwd)\" = /",
                 "test \"$XDG_RUNTIME_DIR$SECRET\" = /run/user/65534",
                 "test \"$(ps -o sid= -p $$ | xargs)\" = $PPID",
                 "grep '^SigBlk:.0*$' /proc/self/status",
                 "test \"$(nice) $(umask) $(ionice)\" = '0 0022 none: prio 0'",
                 "grep -x 0 /proc/self/oom_score_adj",
                 "chrt -p $$ | grep -q SCHED_OTHER",
                 "test \"$(prlimit --noheadings --raw -o HARD --nice)\" = 0",
             })
            EXPECT_TRUE(RunScript(script)) << script;
    }).join();
    setgroups(0, nullptr);
    unsetenv("SECRET");
    umask(mask);
    std::ofstream("/proc/self/oom_score_adj") << 0;
    setrlimit(RLIMIT_NICE, &before);
    close(99);

    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(RunAs(nobody, {"/bin/sh", "-c", "exit 3"}, 20s), 3);
    EXPECT_FALSE(RunScript("kill -9 $$"));
    EXPECT_EQ(RunAs(static_cast<uid_t>(-1), {"/bin/true"}, 20s), -1);
    EXPECT_NE(RunAs(nobody, {"/no/such/program"}, 20s), 0);
    EXPECT_FALSE(RunScript("sleep 60", 100ms));
    EXPECT_LT(std::chrono::steady_clock::now() - began, 10s);
}

} // namespace
} // namespace kqu::post

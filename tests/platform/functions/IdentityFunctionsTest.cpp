#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <grp.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kqu::platform {
namespace {

template <class F, class... Arguments>
auto Call(Arguments&&... arguments) {
    FunctionTable table;
    RegisterIdentityFunctions(table);
    return (*table.Find<F>())(std::forward<Arguments>(arguments)...);
}

std::string BothTo(std::uint32_t user) {
    const int effective = Call<functions::seteuid>(user);
    return std::to_string(effective) + std::to_string(Call<functions::setuid>(user));
}

/// What a child process that runs `body` tells.
std::string InChild(const std::function<std::string()>& body) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    if (fork() == 0) {
        const std::string told = body();
        _exit(write(ends[1], told.data(), told.size()) >= 0 ? 0 : 1);
    }
    close(ends[1]);
    std::array<char, 4096> told{};
    EXPECT_GT(read(ends[0], told.data(), told.size() - 1), 0);
    close(ends[0]);
    wait(nullptr);
    return told.data();
}

/// What the kernel says of the process: real, effective, saved and file system ids, and so on,
/// with each repeated word only once.
std::string Identity() {
    std::ifstream file("/proc/self/status");
    std::string all;
    for (std::string line; std::getline(file, line);)
        for (const char* key : {"Uid:", "Gid:", "Groups:", "CapPrm:", "CapEff:"})
            if (line.starts_with(key)) {
                std::istringstream words(line);
                for (std::string word, before; words >> word; before = word)
                    all += word == before ? "" : word + " ";
            }
    return all;
}

const bool runsAsRoot = geteuid() == 0;

TEST(IdentityFunctionsTest, FromRootEverythingIsGivenUpForGood) {
    if (!runsAsRoot) {
        std::puts("NOT RUN: only root has something to give up");
        return;
    }
    // A user without an account, who gets no group that could be anybody's.
    const std::string told = InChild([] {
        const std::array<gid_t, 3> former{0, 4, 27};
        std::string changed = std::to_string(setgroups(former.size(), former.data())) + " ";
        // Capabilities would outlive the change of the user, as some starters want it.
        prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0);
        changed += BothTo(1234567890) + " ";
        changed += Identity();
        return changed + (setuid(0) == 0 || seteuid(0) == 0 ? "back" : BothTo(0));
    });
    EXPECT_EQ(told, "0 00 Uid: 1234567890 Gid: 65534 Groups: CapPrm: 0000000000000000 "
                    "CapEff: 0000000000000000 -1-1");
    EXPECT_EQ(BothTo(0), "00");
    // The effective user alone can be taken back.
    const std::string before = Identity();
    Call<functions::seteuid>(1234567890U);
    EXPECT_EQ(geteuid(), 1234567890U);
    EXPECT_EQ(BothTo(0), "00");
    EXPECT_EQ(Call<functions::setuid>(4294967295U), -1);
    EXPECT_EQ(Identity(), before);
}

TEST(IdentityFunctionsTest, TheSystemTellsItsVersionAndNothingElse) {
    std::int32_t value = 7;
    for (const char* selector : {"", "sys1", "SYSV", "sysv "})
        EXPECT_FALSE(Call<functions::Gestalt>(selector, value)) << selector;
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(Call<functions::Gestalt>("sysv", value));
    EXPECT_EQ(value, 0x1068);
}

} // namespace
} // namespace kqu::platform

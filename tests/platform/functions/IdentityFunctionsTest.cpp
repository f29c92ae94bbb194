#include "platform/functions/IdentityFunctions.h"

#include "platform/functions/Functions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <grp.h>
#include <map>
#include <pwd.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace kqu::platform {
namespace {

constexpr int recordSize = 88;
constexpr std::uint32_t withoutAccount = 1234567890;

FunctionTable Functions() {
    FunctionTable table;
    RegisterIdentityFunctions(table);
    return table;
}

int SetEffective(std::uint32_t user) {
    return (*Functions().Find<functions::seteuid>())(user);
}

int SetForGood(std::uint32_t user) {
    return (*Functions().Find<functions::setuid>())(user);
}

/// What a child process that runs `body` tells about itself.
std::string InChild(const std::function<void(std::ostream&)>& body) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        std::ostringstream told;
        body(told);
        const std::string text = told.str();
        const bool sent = write(ends[1], text.data(), text.size()) >= 0;
        _exit(sent ? 0 : 1);
    }
    close(ends[1]);
    std::string all;
    std::array<char, 512> piece{};
    for (ssize_t got = 0; (got = read(ends[0], piece.data(), piece.size())) > 0;)
        all.append(piece.data(), static_cast<std::size_t>(got));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return all;
}

/// The real, effective, saved and file system ids, and so on, as the kernel lists them.
std::string Status(const std::string& key) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (std::istringstream words(line); line.starts_with(key + ":")) {
            std::string word;
            std::string all;
            words >> word;
            while (words >> word)
                all += (all.empty() ? "" : " ") + word;
            return all;
        }
    return "?";
}

std::string Four(std::uint32_t id) {
    const std::string one = std::to_string(id);
    return one + " " + one + " " + one + " " + one;
}

bool RunsAsRoot() {
    return geteuid() == 0;
}

/// A user with an account who is not root, and that account's group.
struct Account {
    std::uint32_t user = 0;
    std::uint32_t group = 0;
};

Account SomeAccount() {
    const passwd* found = getpwnam("daemon");
    EXPECT_NE(found, nullptr);
    return {found->pw_uid, found->pw_gid};
}

std::string SupplementaryGroupsOf(const Account& account) {
    std::array<gid_t, 64> groups{};
    int count = groups.size();
    getgrouplist("daemon", account.group, groups.data(), &count);
    std::string all;
    for (int i = 0; i < count; ++i)
        all += (i == 0 ? "" : " ") + std::to_string(groups.at(static_cast<std::size_t>(i)));
    return all;
}

TEST(IdentityFunctionsTest, TheRecordHoldsTheOwnerAndNothingPastIt) {
    const auto file =
        std::filesystem::temp_directory_path() / ("kqu-owner-" + std::to_string(getpid()));
    std::filesystem::create_symlink("/nowhere/at/all", file);
    const std::uint32_t owner = RunsAsRoot() ? 4294967294U : getuid();
    ASSERT_EQ(lchown(file.c_str(), owner, static_cast<gid_t>(-1)), 0);
    struct Case {
        std::string path;
        std::size_t size;
        int result;
        std::uint32_t owner;
    };
    const std::uint32_t untouched = 0x5A5A5A5A;
    // A link is described itself, not what it points to.
    for (const Case& c : std::vector<Case>{{file, recordSize, 0, owner},
                                           {file, 16, 0, owner},
                                           {file, 15, -1, untouched},
                                           {"/", recordSize, 0, 0},
                                           {"/nowhere/at/all", recordSize, -1, untouched},
                                           {"", recordSize, -1, untouched}}) {
        std::vector<std::byte> record(c.size, std::byte{0x5A});
        record.resize(c.size);
        EXPECT_EQ((*Functions().Find<functions::lstat>())(c.path, record.data(), c.size), c.result);
        record.resize(recordSize, std::byte{0x5A});
        std::uint32_t read = 0;
        std::memcpy(&read, record.data() + 12, sizeof read);
        EXPECT_EQ(read, c.owner) << c.path << " " << c.size;
        std::memcpy(record.data() + 12, &untouched, sizeof untouched);
        EXPECT_EQ(record, std::vector<std::byte>(recordSize, std::byte{0x5A}));
    }
    std::filesystem::remove(file);
}

TEST(IdentityFunctionsTest, WithoutPrivilegesNothingChanges) {
    const std::string told = InChild([](std::ostream& out) {
        if (RunsAsRoot() && (setgroups(0, nullptr) != 0 || setresgid(4711, 4711, 4711) != 0 ||
                             setresuid(4711, 4711, 4711) != 0))
            out << "not prepared;";
        const auto state = [] { return Status("Uid") + Status("Gid") + Status("Groups"); };
        const std::string before = state();
        const std::uint32_t own = getuid();
        for (const std::uint32_t user : {0U, own + 1, 4294967295U})
            out << SetEffective(user) << SetForGood(user);
        // One's own id is always at hand.
        out << SetEffective(own) << SetForGood(own);
        out << (state() == before ? " same" : " changed");
        out << ((*Functions().Find<functions::getuid>())() == own ? "" : " other user");
    });
    EXPECT_EQ(told, "-1-1-1-1-1-100 same");
}

struct Settling {
    std::uint32_t user;
    std::uint32_t group;
    std::string groups;
};

/// Becomes the user the way that the program does and tells what is left of root.
void GiveUpRoot(std::ostream& out, const Settling& c) {
    const std::array<gid_t, 3> former{0, 4, 27};
    if (setgroups(former.size(), former.data()) != 0)
        out << "no groups to give up;";
    // Capabilities that outlive a change of the user, as some starters hand them on.
    prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0);
    out << SetEffective(c.user) << SetForGood(c.user) << "\n";
    for (const char* key : {"Uid", "Gid", "Groups", "CapInh", "CapPrm", "CapEff", "CapAmb"})
        out << key << " " << Status(key) << "\n";
    out << "back " << (setuid(0) == 0) << (seteuid(0) == 0) << (setresuid(0, 0, 0) == 0)
        << (setgroups(0, nullptr) == 0) << SetEffective(0) << SetForGood(0);
}

TEST(IdentityFunctionsTest, FromRootEverythingIsGivenUpForGood) {
    if (!RunsAsRoot()) {
        EXPECT_EQ(SetEffective(0), -1);
        return;
    }
    const Account daemon = SomeAccount();
    for (const Settling& c :
         std::vector<Settling>{{daemon.user, daemon.group, SupplementaryGroupsOf(daemon)},
                               // Without an account: no group that could be anybody's.
                               {withoutAccount, 65534, ""}}) {
        const std::string none = " 0000000000000000\n";
        EXPECT_EQ(InChild([&](std::ostream& out) { GiveUpRoot(out, c); }),
                  "00\nUid " + Four(c.user) + "\nGid " + Four(c.group) + "\nGroups " + c.groups +
                      "\nCapInh" + none + "CapPrm" + none + "CapEff" + none + "CapAmb" + none +
                      "back 0000-1-1");
    }
}

TEST(IdentityFunctionsTest, SettlingOnRootIsStayingRoot) {
    if (!RunsAsRoot()) {
        EXPECT_EQ(SetForGood(0), -1);
        return;
    }
    const std::string told = InChild([](std::ostream& out) {
        const auto state = [] {
            return Status("Uid") + Status("Gid") + Status("Groups") + Status("CapEff");
        };
        const std::string before = state();
        out << SetEffective(0) << SetForGood(0) << (state() == before ? " same" : " changed");
    });
    EXPECT_EQ(told, "00 same");
}

TEST(IdentityFunctionsTest, AnEffectiveUserAloneCanBeTakenBack) {
    if (!RunsAsRoot()) {
        EXPECT_EQ(SetEffective(getuid()), 0);
        return;
    }
    const std::string told = InChild([](std::ostream& out) {
        out << SetEffective(withoutAccount) << " " << Status("Uid") << " " << SetEffective(0) << " "
            << SetForGood(4294967295U) << " " << Status("Uid");
    });
    EXPECT_EQ(told, "0 0 1234567890 0 1234567890 0 -1 0 0 0 0");
}

TEST(IdentityFunctionsTest, TheSystemTellsItsVersionAndNothingElse) {
    const auto gestalt = *Functions().Find<functions::Gestalt>();
    std::int32_t value = 7;
    for (const char* selector : {"", "sys1", "SYSV", "sysv "}) {
        EXPECT_FALSE(gestalt(selector, value)) << selector;
        EXPECT_EQ(value, 7);
    }
    EXPECT_TRUE(gestalt("sysv", value));
    EXPECT_EQ(value, 0x1068);
}

} // namespace
} // namespace kqu::platform

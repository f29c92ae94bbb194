#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"
#include "platform/loop/SignalSource.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>

namespace kqu::platform {
namespace {

using Block = std::array<char, 16>;

/// The functions as the program calls them.
class ShellFunctionsTest : public testing::Test {
  protected:
    ShellFunctionsTest() { RegisterShellFunctions(table, handles.emplace()); }

    template <class F, class... Arguments>
    auto Call(Arguments... arguments) {
        return (*table.Find<F>())(arguments...);
    }
    std::int32_t Start(const std::string& command) { return Call<functions::popen>(command, "r"); }
    std::size_t Read(std::int32_t stream, Block& block) {
        return Call<functions::fread>(static_cast<void*>(block.data()), block.size(), 1UL, stream);
    }
    /// All that a stream gives until its end.
    std::string Rest(std::int32_t stream) {
        std::string all;
        while (Call<functions::feof>(stream) == 0 && Call<functions::ferror>(stream) == 0) {
            Block block{};
            Read(stream, block);
            all += std::string(block.data(), strnlen(block.data(), block.size()));
        }
        status = Call<functions::pclose>(stream);
        return all;
    }
    std::string Output(const std::string& command) { return Rest(Start(command)); }

    FunctionTable table;
    std::optional<Handles> handles;
    int status = -1;
};

std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

bool HasChildren() {
    return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

TEST_F(ShellFunctionsTest, ACommandGoesToTheShellAsItStandsAndItsOutputComesBackWhole) {
    EXPECT_EQ(Output("printf '%s,' \"a b\" 'pid'; exit 3"), "a b,pid,");
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(Output("echo unheard >&2; readlink /proc/self/fd/2"), "/dev/null\n");
    EXPECT_EQ(Output("head -c 5000 /dev/zero | tr '\\0' x"), std::string(5000, 'x'));
    // A short read is no item, and leaves its bytes in the block.
    const std::int32_t stream = Start("printf abc");
    Block block{};
    EXPECT_EQ(Read(stream, block), 0U);
    EXPECT_STREQ(block.data(), "abc");
    EXPECT_EQ(Rest(stream), "");
    EXPECT_FALSE(HasChildren());
    // A starter that ignores dead children does no harm.
    const auto former = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Output("echo seen"), "seen\n");
    std::signal(SIGCHLD, former);
}

TEST_F(ShellFunctionsTest, AHandleWithoutAStreamReadsAsAtItsEndAndInError) {
    const std::int32_t closed = Start("echo never read");
    Call<functions::pclose>(closed);
    for (const std::int32_t handle : {0, -1, closed, 12345}) {
        Block block{};
        EXPECT_NE(Call<functions::feof>(handle), 0) << handle;
        EXPECT_NE(Call<functions::ferror>(handle), 0) << handle;
        EXPECT_EQ(Read(handle, block), 0U);
        EXPECT_EQ(Call<functions::pclose>(handle), -1) << handle;
    }
    // A command that can't be started has the handle 0.
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{3, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_EQ(Start("echo"), 0);
    setrlimit(RLIMIT_NOFILE, &usual);
}

TEST_F(ShellFunctionsTest, ACommandInheritsNothingAndStartsWithTheUsualSignals) {
    const auto before = OpenDescriptors();
    const std::string list = "ls /proc/self/fd; grep -E '^Sig(Blk|Ign|Cgt)' /proc/self/status";
    const std::string usual = Output(list);
    const std::int32_t outer = Start("sleep 0.1; echo outer");
    EXPECT_EQ(OpenDescriptors(), before + 1);
    {
        const SignalSource source([] {});
        EXPECT_EQ(Output(list), usual);
        // A reader that goes away ends the writer.
        EXPECT_EQ(WTERMSIG(Call<functions::pclose>(Start("exec cat /dev/zero"))), SIGPIPE);
    }
    EXPECT_EQ(Rest(outer), "outer\n");
    EXPECT_GT(Start("cat /dev/zero"), 0);
    EXPECT_EQ(OpenDescriptors(), before + 1);
    handles.reset();
    EXPECT_EQ(OpenDescriptors(), before) << "what nobody closed goes with the handles";
    EXPECT_FALSE(HasChildren());
}

TEST_F(ShellFunctionsTest, ARequestToTerminateEndsTheReadingAndTheCommand) {
    const SignalSource source([] {});
    // The first one is silent; the second one goes on after it has closed its output.
    for (const char* command : {"sleep 600", "exec >&-; sleep 600"}) {
        const std::int32_t stream = Start(command);
        raise(SIGTERM);
        Block block{};
        EXPECT_EQ(Read(stream, block), 0U);
        EXPECT_NE(Call<functions::ferror>(stream), 0);
        EXPECT_EQ(WTERMSIG(Call<functions::pclose>(stream)), SIGTERM);
    }
    EXPECT_FALSE(HasChildren());
}

} // namespace
} // namespace kqu::platform

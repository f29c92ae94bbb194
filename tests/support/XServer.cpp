#include "tests/support/XServer.h"

#include "tests/support/Onlooker.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kqu::x11test {

namespace {
constexpr int startLimitInMilliseconds = 20000;

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// The line that the X server writes when it is ready: its display number. Empty if it ended.
std::string NumberFrom(int descriptor) {
    std::string number;
    pollfd ready{descriptor, POLLIN, 0};
    while (poll(&ready, 1, startLimitInMilliseconds) > 0) {
        char c = 0;
        if (read(descriptor, &c, 1) != 1 || c == '\n')
            break;
        number += c;
    }
    return number;
}
} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment, int inherited)
    : pid_(-1) {
    const auto arguments = Pointers(command);
    const auto variables = Pointers(environment);
    pid_ = fork();
    if (pid_ < 0)
        throw std::runtime_error("no process for " + command.front());
    if (pid_ > 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (inherited >= 0)
        fcntl(inherited, F_SETFD, 0);
    const int silence = open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(silence, standard);
    execvpe(arguments[0], arguments.data(), variables.data());
    _exit(127);
}

ChildProcess::~ChildProcess() {
    kill(pid_, SIGKILL);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

XServer::XServer(const std::string& screen) {
    std::array<int, 2> answer{};
    if (pipe2(answer.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe to the X server");
    server_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(answer[1]), "-screen", "0",
                                 screen, "-nolisten", "tcp", "-ac", "-noreset"},
        std::vector<std::string>{"PATH=/usr/bin:/bin"}, answer[1]);
    close(answer[1]);
    const std::string number = NumberFrom(answer[0]);
    close(answer[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start");
    display_ = ":" + number;
    setenv("DISPLAY", display_.c_str(), 1);
    std::string folder = std::filesystem::temp_directory_path() / "kqu-x11-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        throw std::runtime_error("no folder for the window managers");
    home_ = folder;
}

XServer::~XServer() {
    manager_.reset();
    server_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(home_, ignored);
}

void XServer::StartManager(const std::string& program) {
    manager_.reset();
    Onlooker onlooker;
    onlooker.WaitFor([&] { return !onlooker.HasManager(); }, "the former manager to go");
    if (program.empty())
        return;
    // Without a PATH it starts no helpers with windows of their own.
    manager_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{program},
        std::vector<std::string>{"PATH=", "LANG=C.UTF-8", "HOME=" + home_, "DISPLAY=" + display_},
        -1);
    onlooker.WaitFor([&] { return onlooker.HasManager(); }, program + " to come up");
    // One that has only just come up may leave requests lying until the next event wakes it.
    const xcb_window_t probe = onlooker.MakeWindow({600, 600, 10, 10});
    onlooker.WaitFor([&] { return onlooker.IsViewable(probe); }, program + " to manage windows",
                     [&] { onlooker.Touch(onlooker.Root()); });
    onlooker.DestroyWindow(probe);
    // Another window may get the same number.
    onlooker.WaitFor([&] { return !onlooker.IsListed(probe); }, program + " to forget the probe");
}

} // namespace kqu::x11test

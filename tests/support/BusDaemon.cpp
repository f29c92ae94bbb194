#include "tests/support/BusDaemon.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace kqu::testing_support {

namespace {
constexpr int startDeadline = 10000;

std::filesystem::path MakeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kqu-bus-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no folder for a bus could be made");
    std::filesystem::permissions(pattern, std::filesystem::perms(0755));
    return pattern;
}
} // namespace

BusDaemon::BusDaemon()
    : folder_(MakeFolder()), address_("unix:path=" + (folder_ / "bus").string()) {
    std::ofstream(folder_ / "bus.conf")
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
           "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>system</type><listen>"
        << address_
        << "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow user=\"*\"/>"
           "<allow own=\"*\"/><allow send_type=\"*\"/><allow receive_type=\"*\"/></policy>"
           "<limit name=\"max_message_size\">134217728</limit>"
           "<limit name=\"max_incoming_bytes\">268435456</limit>"
           "<limit name=\"max_outgoing_bytes\">268435456</limit></busconfig>\n";
    Start();
}

BusDaemon::~BusDaemon() {
    Stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void BusDaemon::Start() {
    std::array<int, 2> ready{};
    if (pipe(ready.data()) != 0)
        throw std::runtime_error("no pipe");
    const std::string config = "--config-file=" + (folder_ / "bus.conf").string();
    const std::string print = "--print-address=" + std::to_string(ready[1]);
    daemon_ = fork();
    if (daemon_ == 0) {
        execlp("dbus-daemon", "dbus-daemon", config.c_str(), "--nofork", print.c_str(), nullptr);
        _exit(127);
    }
    close(ready[1]);
    pollfd waited{ready[0], POLLIN, 0};
    char byte = 0;
    const bool started = poll(&waited, 1, startDeadline) == 1 && read(ready[0], &byte, 1) == 1;
    close(ready[0]);
    if (!started)
        throw std::runtime_error("dbus-daemon could not be started");
}

void BusDaemon::Stop() {
    if (daemon_ <= 0)
        return;
    kill(daemon_, SIGKILL);
    waitpid(daemon_, nullptr, 0);
    daemon_ = -1;
}

int RunCommand(const std::string& command) {
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace kqu::testing_support

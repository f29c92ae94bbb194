#include "tests/support/BusDaemon.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

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

std::string Policy(BusDaemon::Kind kind) {
    const std::string bus = "send_destination=\"org.freedesktop.DBus\" send_interface=";
    if (kind == BusDaemon::Kind::Session)
        return R"(<policy context="default"><allow user="*"/><allow own="*"/>
            <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/></policy>)";
    return R"(<policy context="default"><allow user="*"/><deny own="*"/>
            <deny send_type="method_call"/><allow send_type="signal"/>
            <allow send_requested_reply="true" send_type="method_return"/>
            <allow send_requested_reply="true" send_type="error"/>
            <allow receive_type="method_call"/><allow receive_type="method_return"/>
            <allow receive_type="error"/><allow receive_type="signal"/>
            <allow )" +
           bus + "\"org.freedesktop.DBus\"/></policy><policy user=\"" + std::to_string(getuid()) +
           "\"><allow " + bus + "\"org.freedesktop.DBus.Debug.Stats\"/></policy>";
}

std::string Configuration(BusDaemon::Kind kind, const std::string& address) {
    std::string text =
        R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
            "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd"><busconfig>)";
    text += kind == BusDaemon::Kind::Session ? "<type>session</type>" : "<type>system</type>";
    text += "<listen>" + address + "</listen><auth>EXTERNAL</auth>" + Policy(kind);
    return text + R"(<limit name="max_message_size">134217728</limit>
        <limit name="max_incoming_bytes">268435456</limit>
        <limit name="max_outgoing_bytes">1000000000</limit></busconfig>)";
}
} // namespace

BusDaemon::BusDaemon(Kind kind, Start start)
    : folder_(MakeFolder()), address_("unix:path=" + Socket().string()) {
    std::ofstream(folder_ / "bus.conf") << Configuration(kind, address_);
    if (start == Start::Now)
        Run();
}

BusDaemon::~BusDaemon() {
    Stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void BusDaemon::Run() {
    std::array<int, 2> ready{};
    if (pipe2(ready.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const std::string configuration = "--config-file=" + (folder_ / "bus.conf").string();
    const std::string log = folder_ / "log";
    daemon_ = fork();
    if (daemon_ == 0) {
        const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(file, STDERR_FILENO);
        dup2(ready[1], STDOUT_FILENO);
        execlp("dbus-daemon", "dbus-daemon", configuration.c_str(), "--nofork", "--print-address=1",
               nullptr);
        _exit(127);
    }
    close(ready[1]);
    pollfd waited{ready[0], POLLIN, 0};
    char byte = 0;
    const bool started = poll(&waited, 1, startDeadline) == 1 && read(ready[0], &byte, 1) == 1;
    close(ready[0]);
    if (started)
        return;
    Stop();
    std::ifstream told(log);
    throw std::runtime_error("dbus-daemon could not be started: " +
                             std::string(std::istreambuf_iterator<char>(told), {}));
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

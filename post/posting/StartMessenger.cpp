#include "post/posting/StartMessenger.h"

#include "post/posting/Connection.h"
#include "post/posting/Descriptor.h"
#include "post/posting/UserCommand.h"

#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

namespace kqu::post {

namespace {
/// The messenger owns it as soon as it listens.
constexpr const char* messenger = "com.brackwater.KQU_Messenger";
constexpr const char* unit = "kqu-messenger.service";
constexpr const char* serviceManager = "org.freedesktop.systemd1";
/// The command that starts it for the user as whom it runs; it lies beside every other one.
constexpr const char* command = "kqu-post";

/// How long root leaves a session alone that does not answer, so that a job with many posts waits
/// once.
constexpr std::chrono::seconds untilAskedAgain = std::chrono::minutes(10);

/// Has the user's service manager start it, and waits until it has done with that, well or badly.
/// False where it doesn't know how.
bool StartedByManager(Questions& bus) {
    if (!bus.HasOwner(serviceManager))
        return false;
    const MessagePointer reply =
        bus.Call({serviceManager, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager"},
                 "StartUnit", "ss", unit, "replace");
    const char* path = nullptr;
    if (!reply || sd_bus_message_read_basic(reply.get(), 'o', &path) <= 0)
        return false;
    // A job that is done, or was given up, is no longer there.
    while (bus.Call({serviceManager, path, "org.freedesktop.DBus.Properties"}, "Get", "ss",
                    "org.freedesktop.systemd1.Job", "State"))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return true;
}

bool StartInSession(sd_bus& connected, Questions::Moment deadline) {
    Questions bus(connected, deadline);
    if (bus.HasOwner(messenger))
        return true;
    // The bus answers when the name is owned, or can't be.
    if (!StartedByManager(bus))
        static_cast<void>(bus.Call({busName, "/org/freedesktop/DBus", busName},
                                   "StartServiceByName", "su", messenger, 0U));
    return bus.HasOwner(messenger);
}

std::string FolderOfProgram() {
    std::string path(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(static_cast<std::size_t>(length < 0 ? 0 : length));
    return path.substr(0, path.rfind('/') + 1);
}

/// Whether the file was written a short time ago. The clock may have been set back meanwhile.
bool IsRecent(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0)
        return false;
    const std::time_t age = std::time(nullptr) - status.st_mtime;
    return age >= 0 && age < untilAskedAgain.count();
}

void Mark(const std::string& path) {
    constexpr mode_t onlyOwn = 0600;
    unlink(path.c_str());
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, onlyOwn));
}

/// Root never touches what belongs to a user, and a session bus refuses it: the command is run as
/// that user.
bool StartAtSeat() {
    const auto session = SessionAtSeat();
    const std::string mark = "/run/kqu-post.silent." + std::to_string(session ? session->user : 0);
    if (!session || IsRecent(mark))
        return false;
    const auto deadline = std::chrono::steady_clock::now() + patience + untilSilent;
    const int status =
        RunAs(session->user, {FolderOfProgram() + command, "--start-only"}, patience + untilSilent);
    // A start may take long on a busy machine; that alone is no reason to leave the session alone.
    if (status == busIsSilent || std::chrono::steady_clock::now() >= deadline)
        Mark(mark);
    return status == 0;
}
} // namespace

bool StartMessenger(const Connection& connection) {
    if (connection.kind == Bus::Session)
        return StartInSession(*connection.bus, std::chrono::steady_clock::now() + patience);
    if (geteuid() == 0)
        return StartAtSeat();
    try {
        return StartMessenger(Connect(Bus::Session));
    } catch (const PostError&) {
        return false;
    }
}

} // namespace kqu::post

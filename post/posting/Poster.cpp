#include "post/posting/Poster.h"

#include "post/posting/Descriptor.h"
#include "post/posting/UserCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

namespace kqu::post {

namespace {
constexpr const char* path = "/com/brackwater/DistributedNotifications";
constexpr const char* interfaceName = "com.brackwater.DistributedNotifications";
constexpr const char* member = "Posted";

/// Listeners on the system bus ask who posted, and the bus knows that only while the poster is
/// connected. Nothing reports that they have asked, and a flood from others may delay them.
constexpr std::chrono::milliseconds stay{10'000};

constexpr const char* notTaken = "the bus has not taken the message";

MessagePointer MakeSignal(sd_bus* bus, const Notification& notification) {
    const std::string failed = "the message can't be made";
    sd_bus_message* signal = nullptr;
    Check(sd_bus_message_new_signal(bus, &signal, path, interfaceName, member), failed);
    MessagePointer owned(signal);
    const std::string object(notification.tool->object);
    Check(sd_bus_message_append(signal, "ss", notification.name.c_str(), object.c_str()), failed);
    Check(sd_bus_message_open_container(signal, SD_BUS_TYPE_ARRAY, "{sv}"), failed);
    for (const auto& [key, value] : notification.values)
        Check(sd_bus_message_append(signal, "{sv}", key.c_str(), "s", value.c_str()), failed);
    Check(sd_bus_message_close_container(signal), failed);
    return owned;
}

/// A bus drops a broadcast that its policy forbids without a word. What holds for the broadcast
/// holds for the same kind of signal to oneself, and that comes back or it doesn't.
void SendToSelf(sd_bus* bus) {
    const char* self = nullptr;
    Check(sd_bus_get_unique_name(bus, &self), notTaken);
    sd_bus_message* made = nullptr;
    Check(sd_bus_message_new_signal(bus, &made, path, interfaceName, member), notTaken);
    const MessagePointer echo(made);
    Check(sd_bus_message_set_destination(made, self), notTaken);
    Check(sd_bus_send(bus, made, nullptr), notTaken);
}

/// The bus answers in order: its answer to a question that was asked behind the signal says that it
/// has dealt with the signal. What came before the answer waits to be processed.
void AwaitTaken(sd_bus* bus) {
    SendToSelf(bus);
    const auto most = std::chrono::microseconds(patience).count();
    Check(sd_bus_set_method_call_timeout(bus, static_cast<std::uint64_t>(most)), notTaken);
    sd_bus_message* answer = nullptr;
    const int result = sd_bus_call_method(bus, busName, "/org/freedesktop/DBus", busName, "GetId",
                                          nullptr, &answer, "");
    const MessagePointer answered(answer);
    Check(result, notTaken);
    bool mayPost = false;
    for (int more = 1; more > 0;) {
        sd_bus_message* received = nullptr;
        more = sd_bus_process(bus, &received);
        const MessagePointer message(received);
        Check(more, notTaken);
        mayPost |= message && sd_bus_message_is_signal(received, interfaceName, member) > 0;
    }
    Check(mayPost ? 0 : -EACCES, notTaken);
}

/// A bus allows one user a few hundred connections only, so the processes that keep one are limited
/// as well: each holds one of these places, a lock where nobody else can take it. Nothing where all
/// are taken.
Descriptor TakePlace() {
    constexpr int places = 32;
    const std::string folder = geteuid() == 0 ? "/run" : "/run/user/" + std::to_string(geteuid());
    for (int place = 0; place < places; ++place) {
        const std::string file = folder + "/kqu-post.place." + std::to_string(place);
        Descriptor held(
            open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
        if (held && flock(held.Number(), LOCK_EX | LOCK_NB) == 0)
            return held;
    }
    return {};
}

/// Whether the service manager itself runs this process, by systemd.exec(5): what such a process
/// leaves behind ends with it.
bool IsOfServiceManager() {
    const char* const process = std::getenv("SYSTEMD_EXEC_PID");
    return process != nullptr && process == std::to_string(getpid());
}

/// Lets a child keep the connection, so that the caller need not wait. Where the child would be
/// killed, the caller keeps it for as long; where there can be no child, for as long as an idle
/// listener needs.
void KeepConnected(int connection) {
    const bool staysItself = IsOfServiceManager();
    const Descriptor place = staysItself ? Descriptor() : TakePlace();
    const auto [low, high] = std::minmax({connection, place.Number()});
    const pid_t child = place ? fork() : -1;
    if (child > 0)
        return;
    const bool isFree = child == 0 && LeaveCaller({low, high});
    const std::chrono::milliseconds time = isFree || staysItself ? stay : stay / 20;
    // Without events poll returns early only when the bus closes the connection.
    pollfd bus{connection, 0, 0};
    poll(&bus, 1, static_cast<int>(time.count()));
    if (child == 0)
        _exit(0);
}
} // namespace

void Send(const Connection& connection, const Notification& notification) {
    sd_bus* bus = connection.bus.get();
    const MessagePointer signal = MakeSignal(bus, notification);
    Check(sd_bus_send(bus, signal.get(), nullptr), notTaken);
    AwaitTaken(bus);
}

void Post(const Connection& connection, const Notification& notification) {
    Send(connection, notification);
    if (connection.kind == Bus::System)
        KeepConnected(sd_bus_get_fd(connection.bus.get()));
}

} // namespace kqu::post

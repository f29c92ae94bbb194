#include "post/posting/Poster.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

namespace kqu::post {

namespace {
constexpr const char* path = "/com/brackwater/DistributedNotifications";
constexpr const char* interfaceName = "com.brackwater.DistributedNotifications";
constexpr const char* member = "Posted";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

/// Listeners on the system bus ask who posted, and the bus can only tell while the poster is there.
/// Nothing tells the poster when they have asked; this is a hundred times what it takes.
constexpr std::chrono::milliseconds stay{500};

constexpr const char* notTaken = "the bus has not taken the message";

void Check(int result, const std::string& what) {
    if (result < 0)
        throw PostError(what + ": " + std::strerror(-result));
}

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

/// Asks something that costs the bus nothing and that every bus allows. The question's serial
/// number.
std::uint64_t AskBus(sd_bus* bus) {
    sd_bus_message* made = nullptr;
    Check(sd_bus_message_new_method_call(bus, &made, busName, busPath, busName, "GetId"), notTaken);
    const MessagePointer question(made);
    std::uint64_t serial = 0;
    Check(sd_bus_send(bus, made, &serial), notTaken);
    return serial;
}

/// The next message that comes in, waiting for it until the deadline.
MessagePointer Receive(sd_bus* bus, std::chrono::steady_clock::time_point deadline) {
    while (true) {
        sd_bus_message* received = nullptr;
        const int result = sd_bus_process(bus, &received);
        MessagePointer message(received);
        Check(result, notTaken);
        if (message)
            return message;
        if (result > 0)
            continue;
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
            deadline - std::chrono::steady_clock::now());
        Check(left.count() > 0 ? 0 : -ETIMEDOUT, notTaken);
        Check(sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())), notTaken);
    }
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

/// The bus answers in order: its answer to a question that was asked behind the signal tells that
/// it has dealt with the signal.
void AwaitTaken(sd_bus* bus) {
    SendToSelf(bus);
    const std::uint64_t question = AskBus(bus);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::uint64_t answered = 0;
    bool mayPost = false;
    MessagePointer message;
    do {
        message = Receive(bus, deadline);
        mayPost |= sd_bus_message_is_signal(message.get(), interfaceName, member) > 0;
    } while (sd_bus_message_get_reply_cookie(message.get(), &answered) < 0 || answered != question);
    Check(-sd_bus_message_get_errno(message.get()), notTaken);
    Check(mayPost ? 0 : -EACCES, notTaken);
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
        std::this_thread::sleep_for(stay);
}

void Post(Bus bus, const Notification& notification) {
    Post(Connect(bus), notification);
}

} // namespace kqu::post

#pragma once

#include "platform/CDeleter.h"
#include "platform/dbus/WireDecoder.h"

#include <array>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace kqu::testing_support {

using Message = platform::CPointer<sd_bus_message, sd_bus_message_unref>;

/// A posted signal with these arguments in sd-bus's own notation, as a receiver gets it. It is made
/// on a connection that leads nowhere. Raises std::runtime_error where the notation is wrong.
template <class... Values>
[[nodiscard]] Message MakePosted(const char* types, Values... values) {
    std::array<int, 2> ends{};
    sd_bus* bus = nullptr;
    sd_bus_message* made = nullptr;
    const bool isStarted =
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) == 0 &&
        sd_bus_new(&bus) >= 0 && sd_bus_set_fd(bus, ends[0], ends[0]) >= 0 &&
        sd_bus_start(bus) >= 0;
    const platform::CPointer<sd_bus, sd_bus_close_unref> owned(bus);
    const bool isMade = isStarted &&
                        sd_bus_message_new_signal(bus, &made, "/a", platform::postedInterface,
                                                  platform::postedMember) >= 0 &&
                        sd_bus_message_append(made, types, values...) >= 0 &&
                        sd_bus_message_seal(made, 1, 0) >= 0 && sd_bus_message_rewind(made, 1) >= 0;
    Message message(made);
    close(ends[1]);
    if (!isMade)
        throw std::runtime_error("no message of these types");
    return message;
}

/// Where the arguments of a message stand that begins with a text: its length first. They are the
/// message's own memory, and may be written over.
[[nodiscard]] inline char* Arguments(sd_bus_message& message) {
    const char* first = nullptr;
    if (sd_bus_message_read_basic(&message, 's', &first) <= 0 ||
        sd_bus_message_rewind(&message, 1) < 0)
        throw std::runtime_error("it begins with no text");
    return const_cast<char*>(first) - sizeof(std::uint32_t);
}

} // namespace kqu::testing_support

#pragma once

#include "platform/CDeleter.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <systemd/sd-bus.h>

namespace kqu::post {

/// The bus is not there or has not taken the message; the message is one line for the user.
class PostError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The user's session bus, or the system bus, on which tools post that run as root.
enum class Bus { Session, System };

using BusPointer = platform::CPointer<sd_bus, sd_bus_close_unref>;
using MessagePointer = platform::CPointer<sd_bus_message, sd_bus_message_unref>;

/// A connection to one of the buses. It belongs to the thread that made it.
struct Connection {
    Bus kind;
    BusPointer bus;
};

/// How long a bus, or somebody on it, may take over a message before it counts as not there.
constexpr std::chrono::seconds patience{10};

/// Connects to a bus and waits until it has greeted. Raises PostError.
[[nodiscard]] Connection Connect(Bus kind, std::chrono::milliseconds most = patience);

/// Raises PostError with this text if an sd-bus function has returned an error.
void Check(int result, const std::string& what);

} // namespace kqu::post

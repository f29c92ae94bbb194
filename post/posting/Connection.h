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

/// The bus is there and says nothing.
class SilentBus : public PostError {
    using PostError::PostError;
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

/// The bus itself, by its name on it, and by its interface.
constexpr const char* busName = "org.freedesktop.DBus";

/// Connects to a bus and waits until it has greeted. Raises PostError, and SilentBus when that
/// takes longer than `most`.
[[nodiscard]] Connection Connect(Bus kind, std::chrono::milliseconds most = patience);

/// Raises PostError with this text if an sd-bus function has returned an error.
void Check(int result, const std::string& what);

/// Questions to the others on a bus, asked one after the other. All answers together may take the
/// patience that is left until the deadline; whatever goes wrong is no answer.
class Questions {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    Questions(sd_bus& bus, Moment deadline) : bus_(bus), deadline_(deadline) {}

    /// Somebody's object and what of it is meant.
    struct Object {
        const char* owner;
        std::string path;
        const char* interface;
    };

    /// Calls a method with arguments of sd-bus's types. Nil where it fails.
    template <class... Arguments>
    [[nodiscard]] MessagePointer Call(const Object& object, const char* member, const char* types,
                                      Arguments... arguments) {
        if (!MayAsk())
            return nullptr;
        sd_bus_message* reply = nullptr;
        const int result =
            sd_bus_call_method(&bus_, object.owner, object.path.c_str(), object.interface, member,
                               nullptr, &reply, types, arguments...);
        MessagePointer owned(reply);
        return result < 0 ? nullptr : std::move(owned);
    }

    /// Whether a name has an owner at present; nobody is started for the question.
    [[nodiscard]] bool HasOwner(const char* name);

  private:
    [[nodiscard]] bool MayAsk();

    sd_bus& bus_;
    Moment deadline_;
};

} // namespace kqu::post

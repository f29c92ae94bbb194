#pragma once

#include "platform/CDeleter.h"
#include "platform/interfaces/EventSource.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>

namespace kqu::platform {

using BusMessage = CPointer<sd_bus_message, sd_bus_message_unref>;

/// An object on a bus, by one of its interfaces.
struct BusObject {
    const char* name;
    const char* path;
    const char* interface;
};

/// The bus daemon itself.
inline constexpr BusObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus"};

/// Who sent a message, as the bus confirms it; empty where it does not say.
[[nodiscard]] std::string_view SenderOf(sd_bus_message& message);

/// The match rule for changes of the owner of one name and of no other, so that nobody else's
/// coming and going wakes the process.
[[nodiscard]] std::string OwnerRule(const std::string& name);

/// A change of the owner of a name; an empty owner is none.
struct OwnerChange {
    std::string_view name;
    std::string_view owner;
};
/// What the bus daemon's signal NameOwnerChanged says; nothing if the message is another one.
[[nodiscard]] std::optional<OwnerChange> OwnerChangeIn(sd_bus_message& message);

/// A connection to one message bus, for as long as it is wanted: made without waiting, served from
/// the event loop, and made anew, quietly, a while after the bus went away or was not there.
///
/// No callback is ever left with the library: every message that it doesn't answer by itself comes
/// out of sd_bus_process and goes to the client from here, outside of the library. So nothing
/// unwinds through it, and it is never entered twice.
class BusConnection final : public EventSource {
  public:
    class Client {
      public:
        virtual ~Client() = default;
        /// The connection was begun. What is sent now goes out in this order as soon as the bus has
        /// let us in; the bus may still turn us away.
        virtual void Began() = 0;
        /// A signal or an answer came in. Calls are answered here, with an error: the program
        /// offers no objects.
        virtual void Received(sd_bus_message& message, EventQueue& queue) = 0;
        /// The connection is gone, and all that was asked on it.
        virtual void Lost() = 0;
    };

    using FindAddress = std::string (*)();

    /// `findAddress` is asked at each try. `client` must outlive the connection.
    BusConnection(FindAddress findAddress, std::chrono::milliseconds retryAfter, Client& client);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Begins the first connection; until then nothing happens.
    void Begin();

    /// Lets the current connection go when the client's call returns; another try follows.
    void GiveUp() { givenUp_ = true; }

    [[nodiscard]] bool IsThere() const { return bus_ != nullptr; }

    /// A call without its arguments that starts nobody; nil while there is no connection.
    [[nodiscard]] BusMessage CallOf(const BusObject& object, const char* member) const;
    /// Sends a call and returns its serial number, by which its answer is known. 0 if it could not
    /// be sent; the connection is given up then.
    std::uint64_t Ask(const BusMessage& call);
    /// Asks the bus daemon by a method that takes one text.
    std::uint64_t AskBus(const char* member, const std::string& argument);
    /// Sends a call whose answer nobody wants.
    void Notify(const BusMessage& call);

    [[nodiscard]] pollfd Watch() const override;
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

    /// What one Collect takes in at most. Messages can be large, so there is a time as well, after
    /// which no further one is begun.
    static constexpr int messagesPerCollect = 512;
    static constexpr std::chrono::milliseconds timePerCollect{10};

  private:
    using Bus = CPointer<sd_bus, sd_bus_close_unref>;

    void Connect();
    void Lose();
    void Take(sd_bus_message& message, EventQueue& queue);
    [[nodiscard]] Bus Open() const;

    FindAddress findAddress_;
    std::chrono::milliseconds retryAfter_;
    Client& client_;
    Bus bus_;
    bool wanted_ = false;
    bool givenUp_ = false;
    Moment retryAt_;
};

} // namespace kqu::platform

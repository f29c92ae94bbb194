#pragma once

#include "platform/CDeleter.h"
#include "platform/interfaces/EventSource.h"

#include <chrono>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>

namespace kqu::platform {

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
        virtual void Began(sd_bus& bus) = 0;
        /// A message came in.
        virtual void Received(sd_bus_message& message, EventQueue& queue) = 0;
        /// The connection is gone, and all that was asked on it.
        virtual void Lost() = 0;
    };

    using FindAddress = std::string (*)();

    /// `findAddress` is asked at each try. `client` must outlive the connection.
    BusConnection(FindAddress findAddress, std::chrono::milliseconds retryAfter, Client& client);
    ~BusConnection() override;
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Begins the first connection; until then nothing happens.
    void Begin();

    /// Lets the current connection go when the client's call returns; another try follows.
    void GiveUp() { givenUp_ = true; }

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

#pragma once

#include "platform/CDeleter.h"
#include "platform/interfaces/EventSource.h"

#include <systemd/sd-bus.h>

#include <exception>
#include <optional>

namespace kqu::platform {

using BusPointer = CPointer<sd_bus, sd_bus_flush_close_unref>;
using BusSlot = CPointer<sd_bus_slot, sd_bus_slot_unref>;
using BusMessage = CPointer<sd_bus_message, sd_bus_message_unref>;

/// Which of the two message buses of a D-Bus system.
enum class Bus { Session, System };

/// The one who uses a connection.
class BusClient {
  public:
    virtual ~BusClient() = default;
    /// A connection is there: the place to add matches, asynchronously.
    virtual void Connected(sd_bus* bus) = 0;
    /// The connection has gone, and with it all slots.
    virtual void Disconnected() = 0;
    /// What the callbacks have taken in is to be posted.
    virtual void Deliver(EventQueue& queue) = 0;
};

/// A connection to a message bus that is made without blocking and made again, quietly, every few
/// seconds while the bus is not there. Callbacks of the library run inside Collect alone and must
/// not call handlers; they take in what came and leave it to Deliver.
class BusConnection final : public EventSource {
  public:
    /// How long to wait before a bus that is not there is tried again.
    static constexpr std::chrono::seconds retryPeriod{3};

    BusConnection(Bus which, BusClient& client);
    ~BusConnection() override;
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Begins to connect, as the user that the process is now.
    void Open();
    /// The connection, nil while there is none.
    [[nodiscard]] sd_bus* Get() const { return bus_.get(); }

    [[nodiscard]] pollfd Watch() const override;
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

    /// To be called in a catch block of a callback: carries the exception over the library's
    /// frames; Collect raises it again.
    void KeepException() { raised_ = std::current_exception(); }

  private:
    void Connect();
    void Lose();
    [[nodiscard]] bool Process();

    Bus which_;
    BusClient& client_;
    BusPointer bus_;
    bool wanted_ = false;
    Moment retryAt_{};
    std::exception_ptr raised_;
};

} // namespace kqu::platform

#pragma once

#include "platform/power_messages/Inhibitor.h"

#include <array>

namespace kqu::platform {

/// The two services on one bus that keep the machine awake. Nothing waits for them and nothing
/// starts them.
class InhibitingServices : protected BusConnection::Client {
  public:
    [[nodiscard]] BusConnection& Connection() { return connection_; }

    /// From now on the machine is to be kept awake for this reason.
    void Want(const std::string& why) {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Want(why);
    }
    void Forgo() {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Forgo();
    }

  protected:
    InhibitingServices(BusConnection::FindAddress findAddress, std::chrono::milliseconds retryAfter,
                       const InhibitorService& first, const InhibitorService& second)
        : connection_(findAddress, retryAfter, *this),
          inhibitors_{Inhibitor(connection_, first), Inhibitor(connection_, second)} {}

    void Began() override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Began();
    }
    void Received(sd_bus_message& message, EventQueue& /*queue*/) override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Received(message);
    }
    void Lost() override {
        for (Inhibitor& inhibitor : inhibitors_)
            inhibitor.Lost();
    }

    BusConnection connection_;
    std::array<Inhibitor, 2> inhibitors_;
};

} // namespace kqu::platform

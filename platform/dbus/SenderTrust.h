#pragma once

#include "platform/dbus/BusConnection.h"
#include "platform/interfaces/NotificationCentre.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kqu::platform {

/// Decides whose notifications on the system bus are heard: root's and those of the process's own
/// user, as the bus itself confirms. The bus is asked once per sender, without waiting; meanwhile
/// the sender's notifications are kept in their order. A sender that has left is forgotten.
class SenderTrust {
  public:
    using Heard = std::function<void(PostedNotification)>;

    /// What is heard goes to `heard`, from within callbacks of the connection.
    SenderTrust(BusConnection& connection, Heard heard);
    ~SenderTrust();
    SenderTrust(const SenderTrust&) = delete;
    SenderTrust& operator=(const SenderTrust&) = delete;

    void Take(const std::string& sender, PostedNotification posted);
    /// Forgets everybody: the bus has gone.
    void Clear();

  private:
    enum class Verdict { Asked, Trusted, Refused };
    struct Sender {
        SenderTrust* owner = nullptr;
        std::string name;
        Verdict verdict = Verdict::Asked;
        std::vector<PostedNotification> waiting;
        BusSlot question;
        BusSlot departure;
    };

    void Ask(Sender& sender);
    void Decide(Sender& sender, bool trusted);
    static int OnAnswer(sd_bus_message* reply, void* userdata, sd_bus_error* error);
    static int OnDeparture(sd_bus_message* signal, void* userdata, sd_bus_error* error);

    BusConnection& connection_;
    Heard heard_;
    std::map<std::string, std::unique_ptr<Sender>> senders_;
    std::size_t waitingInAll_ = 0;
};

} // namespace kqu::platform

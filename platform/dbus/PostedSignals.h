#pragma once

#include "platform/dbus/BusConnection.h"
#include "platform/dbus/SenderTrust.h"
#include "platform/interfaces/DistributedNotifications.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace kqu::platform {

/// Whose posts are heard on a bus.
enum class HeardSenders { All, RootAndOwn };

/// The Posted signals of one bus: asks the bus for them, and turns each that may be heard into one
/// delivery to the listener.
class PostedSignals final : public BusConnection::Client, public SenderTrust::Bus {
  public:
    PostedSignals(HeardSenders heard, BusConnection::FindAddress findAddress,
                  std::chrono::milliseconds retryAfter,
                  std::shared_ptr<const DistributedNotifications::Listener> listener);

    void Begin() { connection_.Begin(); }
    [[nodiscard]] EventSource& Source() { return connection_; }

    /// Since when the bus routes to us what is posted; nothing while it doesn't.
    [[nodiscard]] std::optional<Moment> ListeningSince() const { return listeningSince_; }
    /// Whether nothing is under way: the bus has taken the subscription, or there is no bus now.
    [[nodiscard]] bool IsSettled() const { return !connection_.IsThere() || listeningSince_; }

    /// Asks the bus for a well-known name, and queues for it while another has it. Only while there
    /// is a connection. The answer is not read.
    void AskForName(const char* name);
    [[nodiscard]] bool HasAskedForName() const { return hasAskedForName_; }

  private:
    void Began() override;
    void Received(sd_bus_message& message, EventQueue& queue) override;
    void Lost() override;
    void AskForUser(const std::string& sender) override;
    void Forget(const std::string& sender) override;

    void TakePosted(sd_bus_message& message, EventQueue& queue);
    void TakeAnswer(sd_bus_message& message, EventQueue& queue);
    void TakeLeaving(std::string_view sender);
    void Deliver(PostedNotification posted, EventQueue& queue) const;

    /// Empty while nobody listens. Shared with the deliveries that wait in the loop's queue.
    std::shared_ptr<const DistributedNotifications::Listener> listener_;
    BusConnection connection_;
    std::optional<SenderTrust> trust_;
    std::uint64_t subscription_ = 0;
    std::optional<Moment> listeningSince_;
    bool hasAskedForName_ = false;
    /// The senders whose users were asked for, by the serial numbers of the questions.
    std::map<std::uint64_t, std::string> questions_;
};

} // namespace kqu::platform

#pragma once

#include "platform/dbus/BusConnection.h"
#include "platform/logind/InhibitorLock.h"
#include "platform/logind/LockKeeper.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kqu::platform {

/// What the login manager announces to everybody.
enum class Announcement { Sleep, Shutdown };

/// systemd's login manager on the system bus, by its D-Bus interface
/// org.freedesktop.login1.Manager. Nothing here waits for it, and nothing starts it: one that is
/// not there is not there, and one that doesn't answer has requests open. Only what the bus
/// confirms to come from the owner of its name is heard.
class LoginManager final : public LockOffice, private BusConnection::Client {
  public:
    /// All calls come out of Collect, and are to post deliveries rather than to run handlers.
    class Client {
      public:
        virtual ~Client() = default;
        virtual void ManagerCame() = 0;
        /// It has left the bus, or the bus is gone. All requests are void.
        virtual void ManagerLeft() = 0;
        virtual void LockGranted(std::uint64_t request, InhibitorLock lock) = 0;
        virtual void LockRefused(std::uint64_t request) = 0;
        /// The preparation for something began or is over. `kind` is what the manager says of the
        /// kind of a shutdown ("reboot"), if it does.
        virtual void Prepares(Announcement announcement, bool begins,
                              const std::optional<std::string>& kind, EventQueue& queue) = 0;
        /// The answer to RequestScheduledKind: the kind, or nothing.
        virtual void ScheduledKind(const std::optional<std::string>& kind, EventQueue& queue) = 0;
    };

    LoginManager(BusConnection::FindAddress findAddress, std::chrono::milliseconds retryAfter,
                 Client& client);

    void Begin() { connection_.Begin(); }
    [[nodiscard]] EventSource& Source() { return connection_; }
    [[nodiscard]] const EventSource& Source() const { return connection_; }

    [[nodiscard]] std::uint64_t Request(LockMode mode, const std::string& why) override;
    /// Asks what kind of shutdown was scheduled.
    void RequestScheduledKind();

  private:
    using Message = CPointer<sd_bus_message, sd_bus_message_unref>;

    void Began(sd_bus& bus) override;
    void Received(sd_bus_message& message, EventQueue& queue) override;
    void Lost() override;

    void TakeSignal(sd_bus_message& message, EventQueue& queue);
    void TakeAnswer(sd_bus_message& message, EventQueue& queue);
    void TakeAnswerOfBus(sd_bus_message& message, std::uint64_t question, bool isError);
    void TakeKind(sd_bus_message& message, bool isError, EventQueue& queue);
    void TakeLock(sd_bus_message& message, std::uint64_t request, bool isError);
    void SetOwner(const std::string& owner);
    [[nodiscard]] bool IsFromOwner(sd_bus_message& message) const;
    [[nodiscard]] Message CallOf(const char* destination, const char* path, const char* interface,
                                 const char* member) const;
    std::uint64_t AskBus(const char* member, const std::string& argument);
    std::uint64_t Send(const Message& call);

    Client& client_;
    BusConnection connection_;
    /// The current connection, if there is one.
    sd_bus* bus_ = nullptr;
    /// The unique name of the manager; empty while there is none.
    std::string owner_;
    std::uint64_t ownerQuestion_ = 0;
    std::uint64_t kindQuestion_ = 0;
};

} // namespace kqu::platform

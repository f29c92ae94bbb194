#pragma once

#include "platform/dbus/BusConnection.h"
#include "platform/interfaces/Registration.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kqu::platform {

/// A service that can be asked to keep the machine awake, by a method `Inhibit`.
struct InhibitorService {
    BusObject object;
    /// Appends the arguments of the call. Negative for an error, as in sd-bus.
    std::function<int(sd_bus_message& call, const char* why)> writeArguments;
    /// What the answer grants, held for as long as the registration lives. Nothing where the answer
    /// is none that the service gives. `connection` outlives the registration.
    std::function<std::optional<Registration>(sd_bus_message& answer, BusConnection& connection)>
        readGrant;
};

/// Keeps the machine awake by one service while that is wanted.
///
/// A request is sent while somebody owns the name of the service, and again to each new owner.
/// There is at most one request under way; a grant that arrives when it is no longer wanted is
/// given back. A refusal, and a service that does not answer, concern nobody else.
class Inhibitor {
  public:
    /// The pause after a first refusal. It doubles with each further one, up to the longest.
    /// A grant is asked for anew because of another reason only after such a pause.
    static constexpr std::chrono::seconds pause{1};
    static constexpr std::chrono::seconds longestPause{256};

    /// `connection` must outlive the inhibitor.
    Inhibitor(BusConnection& connection, InhibitorService service);

    /// From now on the machine is to be kept awake for this reason. A grant for another reason
    /// stays until its successor is there.
    void Want(const std::string& why);
    void Forgo();

    /// What was refused may be granted now.
    void Retry();

    /// To be called for these events of the connection.
    void Began();
    void Received(sd_bus_message& message);
    void Lost();

    [[nodiscard]] bool IsFromOwner(sd_bus_message& message) const {
        return !owner_.empty() && SenderOf(message) == owner_;
    }

  private:
    void AskIfDue();
    void TakeAnswer(sd_bus_message& answer);
    void SetOwner(std::string_view owner);

    BusConnection& connection_;
    InhibitorService service_;
    /// The unique name of the service; empty while it has none.
    std::string owner_;
    std::uint64_t ownerQuestion_ = 0;

    bool isWanted_ = false;
    std::string why_;
    std::uint64_t request_ = 0;
    std::string askedFor_;
    Registration grant_;
    /// The reason of the grant; nothing while there is none of the present owner.
    std::optional<std::string> grantedFor_;
    Moment notBefore_;
    std::chrono::seconds nextPause_ = pause;
};

} // namespace kqu::platform

#pragma once

#include "platform/interfaces/DistributedNotifications.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace kqu::platform {

/// Decides who is heard on a bus to which every user may post: root and the user that the process
/// runs as at the time of the decision. It asks the bus once for each sender, holds back what the
/// sender posts until the answer is there, and remembers the answer until the sender leaves.
///
/// However many strangers post however much, what it keeps is bounded: the number of senders, what
/// one of them may have held back, and what all may. Beyond that the latest post of a sender is
/// lost, or all that is held back of the sender who fills the room.
class SenderTrust {
  public:
    /// What the trust needs of the bus.
    class Bus {
      public:
        virtual ~Bus() = default;
        /// Asks the bus to report when this sender leaves, and for its user; Answered is called
        /// later.
        virtual void AskForUser(const std::string& sender) = 0;
        /// The sender's leaving is no longer of interest.
        virtual void Forget(const std::string& sender) = 0;
    };

    enum class Opinion { Open, Heard, Refused };
    using Posts = std::deque<PostedNotification>;

    static constexpr std::size_t mostSenders = 256;
    static constexpr std::size_t mostHeldPerSender = 1024;
    /// In bytes; one message of the greatest size that a system bus carries fits.
    static constexpr std::size_t mostBytesPerSender = 40U << 20;
    static constexpr std::size_t mostBytesOfAll = 64U << 20;

    explicit SenderTrust(Bus& bus) : bus_(bus) {}

    [[nodiscard]] Opinion Of(std::string_view sender) const;

    /// Holds a post of a sender about whom the opinion is still open; the first one asks the bus.
    void Hold(std::string_view sender, PostedNotification posted);

    /// The bus has answered with a sender's user, or that it knows no such sender. Returns what was
    /// held back and may be heard now, in the order in which it was posted.
    [[nodiscard]] Posts Answered(std::string_view sender, std::optional<uid_t> user);

    /// A sender has left the bus.
    void Left(std::string_view sender);

    /// The connection is gone, and with it all names on it.
    void Clear();

  private:
    struct Sender {
        Opinion opinion = Opinion::Open;
        std::uint64_t serial = 0;
        Posts held;
        std::size_t bytes = 0;
    };
    using Table = std::map<std::string, Sender, std::less<>>;

    [[nodiscard]] Table::iterator Admit(std::string_view sender);
    [[nodiscard]] bool MakeRoom();
    void Remove(Table::iterator entry);
    Posts TakeHeld(Sender& sender);
    void DropOfTheGreatest();

    Bus& bus_;
    Table senders_;
    std::size_t heldBytes_ = 0;
    std::uint64_t nextSerial_ = 0;
};

} // namespace kqu::platform

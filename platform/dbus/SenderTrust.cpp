#include "platform/dbus/SenderTrust.h"

#include "platform/dbus/WireDecoder.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace kqu::platform {

SenderTrust::Opinion SenderTrust::Of(std::string_view sender) const {
    const auto entry = senders_.find(sender);
    return entry == senders_.end() ? Opinion::Open : entry->second.opinion;
}

void SenderTrust::Hold(std::string_view sender, PostedNotification posted) {
    auto entry = senders_.find(sender);
    if (entry == senders_.end())
        entry = Admit(sender);
    if (entry == senders_.end())
        return;
    Sender& poster = entry->second;
    const std::size_t size = SizeInMemory(posted);
    if (poster.held.size() >= mostHeldPerSender || poster.bytes + size > mostBytesPerSender)
        return;
    poster.held.push_back(std::move(posted));
    poster.bytes += size;
    heldBytes_ += size;
    if (heldBytes_ > mostBytesOfAll)
        DropOfTheGreatest();
}

SenderTrust::Posts SenderTrust::Answered(std::string_view sender, std::optional<uid_t> user) {
    const auto entry = senders_.find(sender);
    if (entry == senders_.end() || entry->second.opinion != Opinion::Open)
        return {};
    if (!user) {
        Remove(entry);
        return {};
    }
    const bool isHeard = *user == 0 || *user == getuid();
    entry->second.opinion = isHeard ? Opinion::Heard : Opinion::Refused;
    Posts held = TakeHeld(entry->second);
    return isHeard ? std::move(held) : Posts();
}

void SenderTrust::Left(std::string_view sender) {
    if (const auto entry = senders_.find(sender); entry != senders_.end())
        Remove(entry);
}

void SenderTrust::Clear() {
    senders_.clear();
    heldBytes_ = 0;
}

SenderTrust::Table::iterator SenderTrust::Admit(std::string_view sender) {
    if (!MakeRoom())
        return senders_.end();
    const auto entry = senders_.emplace(sender, Sender()).first;
    entry->second.serial = nextSerial_++;
    bus_.AskForUser(entry->first);
    return entry;
}

/// Room for one more sender: the one that was decided on the longest ago can be asked for again.
bool SenderTrust::MakeRoom() {
    if (senders_.size() < mostSenders)
        return true;
    auto oldest = senders_.end();
    for (auto entry = senders_.begin(); entry != senders_.end(); ++entry)
        if (entry->second.opinion != Opinion::Open &&
            (oldest == senders_.end() || entry->second.serial < oldest->second.serial))
            oldest = entry;
    if (oldest == senders_.end())
        return false;
    Remove(oldest);
    return true;
}

void SenderTrust::Remove(Table::iterator entry) {
    static_cast<void>(TakeHeld(entry->second));
    bus_.Forget(entry->first);
    senders_.erase(entry);
}

SenderTrust::Posts SenderTrust::TakeHeld(Sender& sender) {
    heldBytes_ -= std::exchange(sender.bytes, 0);
    return std::exchange(sender.held, {});
}

void SenderTrust::DropOfTheGreatest() {
    const auto greatest =
        std::max_element(senders_.begin(), senders_.end(), [](const auto& a, const auto& b) {
            return a.second.bytes < b.second.bytes;
        });
    static_cast<void>(TakeHeld(greatest->second));
}

} // namespace kqu::platform

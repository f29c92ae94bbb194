#include "platform/dbus/SenderTrust.h"

#include <unistd.h>

#include <cstdint>
#include <utility>

namespace kqu::platform {

namespace {
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

// What may pile up while the bus is being asked; what comes on top is dropped.
constexpr std::size_t mostWaitingOfOne = 4096;
constexpr std::size_t mostWaitingInAll = 16384;
} // namespace

SenderTrust::SenderTrust(BusConnection& connection, Heard heard)
    : connection_(connection), heard_(std::move(heard)) {}

SenderTrust::~SenderTrust() = default;

void SenderTrust::Clear() {
    senders_.clear();
    waitingInAll_ = 0;
}

void SenderTrust::Take(const std::string& name, PostedNotification posted) {
    auto& sender = senders_[name];
    if (!sender) {
        sender = std::make_unique<Sender>();
        sender->owner = this;
        sender->name = name;
        Ask(*sender);
    }
    if (sender->verdict == Verdict::Trusted) {
        heard_(std::move(posted));
    } else if (sender->verdict == Verdict::Asked && sender->waiting.size() < mostWaitingOfOne &&
               waitingInAll_ < mostWaitingInAll) {
        sender->waiting.push_back(std::move(posted));
        ++waitingInAll_;
    }
}

void SenderTrust::Ask(Sender& sender) {
    // The departure is asked for first, so that it can't slip by.
    const std::string match = "type='signal',sender='" + std::string(busName) +
                              "',member='NameOwnerChanged',arg0='" + sender.name + "',arg2=''";
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(connection_.Get(), &slot, match.c_str(), OnDeparture, nullptr,
                               &sender) >= 0)
        sender.departure.reset(slot);
    slot = nullptr;
    if (sd_bus_call_method_async(connection_.Get(), &slot, busName, busPath, busName,
                                 "GetConnectionUnixUser", OnAnswer, &sender, "s",
                                 sender.name.c_str()) >= 0)
        sender.question.reset(slot);
    else
        sender.verdict = Verdict::Refused;
}

void SenderTrust::Decide(Sender& sender, bool trusted) {
    sender.verdict = trusted ? Verdict::Trusted : Verdict::Refused;
    waitingInAll_ -= sender.waiting.size();
    for (PostedNotification& posted : std::exchange(sender.waiting, {}))
        if (trusted)
            heard_(std::move(posted));
}

int SenderTrust::OnAnswer(sd_bus_message* reply, void* userdata, sd_bus_error*) {
    auto& sender = *static_cast<Sender*>(userdata);
    try {
        std::uint32_t user = 0;
        const bool known = sd_bus_message_is_method_error(reply, nullptr) == 0 &&
                           sd_bus_message_read_basic(reply, SD_BUS_TYPE_UINT32, &user) > 0;
        sender.owner->Decide(sender, known && (user == 0 || user == getuid()));
    } catch (...) {
        sender.owner->connection_.KeepException();
    }
    return 0;
}

int SenderTrust::OnDeparture(sd_bus_message*, void* userdata, sd_bus_error*) {
    auto& sender = *static_cast<Sender*>(userdata);
    SenderTrust& owner = *sender.owner;
    owner.waitingInAll_ -= sender.waiting.size();
    const std::string name = sender.name;
    owner.senders_.erase(name);
    return 0;
}

} // namespace kqu::platform

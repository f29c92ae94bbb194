#include "platform/power_messages/LoginManager.h"

#include "platform/dbus/BusAddress.h"
#include "platform/interfaces/PowerMessages.h"

#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace kqu::platform {

namespace {
constexpr BusObject manager{"org.freedesktop.login1", "/org/freedesktop/login1",
                            "org.freedesktop.login1.Manager"};
constexpr const char* sleepSignal = "PrepareForSleep";
constexpr const char* shutdownSignal = "PrepareForShutdown";
/// Sent before the plain signal, by managers that say of which kind a shutdown is.
constexpr const char* kindSignal = "PrepareForShutdownWithMetadata";

/// The lock behind the answer's descriptor. No copy of it may get into another process, which would
/// keep the machine awake, so it is duplicated close-on-exec.
std::optional<Registration> ReadLock(sd_bus_message& answer, BusConnection& /*connection*/) {
    int descriptor = -1;
    if (sd_bus_message_read_basic(&answer, SD_BUS_TYPE_UNIX_FD, &descriptor) <= 0)
        return std::nullopt;
    const int lock = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (lock < 0)
        return std::nullopt;
    return Registration([lock] { close(lock); });
}

InhibitorService BlockLock(const char* what) {
    return {manager,
            [what](sd_bus_message& call, const char* why) {
                return sd_bus_message_append(&call, "ssss", what, "KQU Messenger", why, "block");
            },
            ReadLock};
}

bool IsSignal(sd_bus_message& message, const char* member) {
    return sd_bus_message_is_signal(&message, manager.interface, member) > 0;
}

/// Whether the text under the key "type" of an a{sv} that comes next is that of a restart.
bool ReadIsRestart(sd_bus_message& message) {
    std::string_view kind;
    if (sd_bus_message_enter_container(&message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0)
        return false;
    while (sd_bus_message_enter_container(&message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = nullptr;
        const char* text = nullptr;
        if (sd_bus_message_read_basic(&message, SD_BUS_TYPE_STRING, &key) <= 0)
            return false;
        if (std::string_view(key) != "type")
            sd_bus_message_skip(&message, "v");
        else if (sd_bus_message_read(&message, "v", "s", &text) > 0)
            kind = text;
        if (sd_bus_message_exit_container(&message) < 0)
            return false;
    }
    return kind == "reboot" || kind == "kexec" || kind == "soft-reboot";
}
} // namespace

LoginManager::LoginManager(std::chrono::milliseconds retryAfter,
                           std::function<void(std::uint32_t message)> deliver)
    : InhibitingServices(SystemBusAddress, retryAfter, BlockLock("sleep"), BlockLock("shutdown")),
      deliver_(std::move(deliver)) {}

void LoginManager::Began() {
    InhibitingServices::Began();
    for (const char* member : {sleepSignal, shutdownSignal, kindSignal})
        connection_.AskBus("AddMatch", std::string("type='signal',sender='") + manager.name +
                                           "',path='" + manager.path + "',interface='" +
                                           manager.interface + "',member='" + member + "'");
}

void LoginManager::Lost() {
    isShutdownAnnounced_ = false;
    InhibitingServices::Lost();
}

void LoginManager::Received(sd_bus_message& message, EventQueue& queue) {
    InhibitingServices::Received(message, queue);
    // Any user may send such a signal to this process alone.
    if (inhibitors_[0].IsFromOwner(message))
        TakeSignal(message, queue);
}

void LoginManager::TakeSignal(sd_bus_message& message, EventQueue& queue) {
    const bool isSleep = IsSignal(message, sleepSignal);
    const bool hasKind = IsSignal(message, kindSignal);
    int begins = 0;
    if ((!isSleep && !hasKind && !IsSignal(message, shutdownSignal)) ||
        sd_bus_message_read_basic(&message, SD_BUS_TYPE_BOOLEAN, &begins) <= 0)
        return;
    if (begins == 0)
        Ended(isSleep, queue);
    else if (isSleep)
        Deliver(systemWillSleep, queue);
    else if (!std::exchange(isShutdownAnnounced_, true))
        Deliver(hasKind && ReadIsRestart(message) ? systemWillRestart : systemWillPowerOff, queue);
}

/// While the system prepares, the login manager refuses all locks.
void LoginManager::Ended(bool isSleep, EventQueue& queue) {
    for (Inhibitor& inhibitor : inhibitors_)
        inhibitor.Retry();
    if (isSleep)
        Deliver(systemHasPoweredOn, queue);
    else
        isShutdownAnnounced_ = false;
}

void LoginManager::Deliver(std::uint32_t message, EventQueue& queue) const {
    queue.Post([deliver = deliver_, message] { deliver(message); });
}

} // namespace kqu::platform

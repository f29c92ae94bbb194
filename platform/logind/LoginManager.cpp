#include "platform/logind/LoginManager.h"

#include <string_view>
#include <utility>

namespace kqu::platform {

namespace {
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* managerName = "org.freedesktop.login1";
constexpr const char* managerPath = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";
constexpr const char* sleepSignal = "PrepareForSleep";
constexpr const char* shutdownSignal = "PrepareForShutdown";
/// Newer managers tell the kind of a shutdown, in a signal of its own.
constexpr const char* kindSignal = "PrepareForShutdownWithMetadata";

/// Never "idle": that the screen goes dark harms no job.
constexpr const char* lockedActions = "sleep:shutdown";
constexpr const char* lockHolder = "KQU Messenger";

std::string SignalRule(const char* member) {
    return std::string("type='signal',sender='") + managerName + "',path='" + managerPath +
           "',interface='" + managerInterface + "',member='" + member + "'";
}

std::string OwnerRule() {
    return std::string("type='signal',sender='") + busName + "',interface='" + busName +
           "',member='NameOwnerChanged',arg0='" + managerName + "'";
}

bool IsFromBus(sd_bus_message& message) {
    const char* sender = sd_bus_message_get_sender(&message);
    return sender != nullptr && std::string_view(sender) == busName;
}

bool IsManagerSignal(sd_bus_message& message, const char* member) {
    return sd_bus_message_is_signal(&message, managerInterface, member) > 0;
}

std::optional<bool> ReadBoolean(sd_bus_message& message) {
    int value = 0;
    if (sd_bus_message_read_basic(&message, SD_BUS_TYPE_BOOLEAN, &value) <= 0)
        return std::nullopt;
    return value != 0;
}

/// The text under the key "type" of an a{sv} that comes next.
std::optional<std::string> ReadKind(sd_bus_message& message) {
    std::optional<std::string> kind;
    if (sd_bus_message_enter_container(&message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0)
        return kind;
    while (sd_bus_message_enter_container(&message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = nullptr;
        const char* text = nullptr;
        if (sd_bus_message_read_basic(&message, SD_BUS_TYPE_STRING, &key) <= 0)
            return kind;
        const bool isText = sd_bus_message_verify_type(&message, SD_BUS_TYPE_VARIANT, "s") > 0;
        if (std::string_view(key) != "type" || !isText)
            sd_bus_message_skip(&message, "v");
        else if (sd_bus_message_read(&message, "v", "s", &text) > 0)
            kind = text;
        if (sd_bus_message_exit_container(&message) < 0)
            return kind;
    }
    return kind;
}
} // namespace

LoginManager::LoginManager(BusConnection::FindAddress findAddress,
                           std::chrono::milliseconds retryAfter, Client& client)
    : client_(client), connection_(findAddress, retryAfter, *this) {}

std::uint64_t LoginManager::Request(LockMode mode, const std::string& why) {
    const Message call =
        owner_.empty() ? nullptr : CallOf(owner_.c_str(), managerPath, managerInterface, "Inhibit");
    const char* how = mode == LockMode::Block ? "block" : "delay";
    if (!call ||
        sd_bus_message_append(call.get(), "ssss", lockedActions, lockHolder, why.c_str(), how) < 0)
        return 0;
    return Send(call);
}

void LoginManager::RequestScheduledKind() {
    const Message call =
        CallOf(owner_.c_str(), managerPath, "org.freedesktop.DBus.Properties", "Get");
    if (call && sd_bus_message_append(call.get(), "ss", managerInterface, "ScheduledShutdown") >= 0)
        kindQuestion_ = Send(call);
}

/// The rules come before the question, so that a manager that comes or goes in between is heard of.
void LoginManager::Began(sd_bus& bus) {
    bus_ = &bus;
    AskBus("AddMatch", OwnerRule());
    for (const char* member : {sleepSignal, shutdownSignal, kindSignal})
        AskBus("AddMatch", SignalRule(member));
    ownerQuestion_ = AskBus("GetNameOwner", managerName);
}

void LoginManager::Lost() {
    bus_ = nullptr;
    ownerQuestion_ = 0;
    SetOwner("");
}

void LoginManager::SetOwner(const std::string& owner) {
    if (owner == owner_)
        return;
    kindQuestion_ = 0;
    if (!std::exchange(owner_, owner).empty())
        client_.ManagerLeft();
    if (!owner_.empty())
        client_.ManagerCame();
}

bool LoginManager::IsFromOwner(sd_bus_message& message) const {
    const char* sender = sd_bus_message_get_sender(&message);
    return sender != nullptr && !owner_.empty() && owner_ == sender;
}

void LoginManager::Received(sd_bus_message& message, EventQueue& queue) {
    std::uint8_t type = 0;
    if (sd_bus_message_get_type(&message, &type) < 0)
        return;
    if (type == SD_BUS_MESSAGE_SIGNAL)
        TakeSignal(message, queue);
    else if (type == SD_BUS_MESSAGE_METHOD_CALL)
        // Nobody waits in vain for an answer from a program that offers nothing.
        sd_bus_reply_method_errorf(&message, SD_BUS_ERROR_UNKNOWN_OBJECT, "No such object");
    else
        TakeAnswer(message, queue);
}

void LoginManager::TakeSignal(sd_bus_message& message, EventQueue& queue) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (IsFromBus(message)) {
        if (sd_bus_message_is_signal(&message, busName, "NameOwnerChanged") > 0 &&
            sd_bus_message_read(&message, "sss", &name, &before, &now) > 0 &&
            std::string_view(name) == managerName)
            SetOwner(now);
        return;
    }
    if (!IsFromOwner(message))
        return;
    const bool isSleep = IsManagerSignal(message, sleepSignal);
    const bool hasKind = IsManagerSignal(message, kindSignal);
    if (!isSleep && !hasKind && !IsManagerSignal(message, shutdownSignal))
        return;
    if (const auto begins = ReadBoolean(message))
        client_.Prepares(isSleep ? Announcement::Sleep : Announcement::Shutdown, *begins,
                         hasKind ? ReadKind(message) : std::nullopt, queue);
}

void LoginManager::TakeAnswer(sd_bus_message& message, EventQueue& queue) {
    std::uint64_t question = 0;
    if (sd_bus_message_get_reply_cookie(&message, &question) < 0)
        return;
    const bool isError = sd_bus_message_is_method_error(&message, nullptr) > 0;
    if (IsFromBus(message))
        TakeAnswerOfBus(message, question, isError);
    else if (!IsFromOwner(message))
        return;
    else if (question == kindQuestion_)
        TakeKind(message, isError, queue);
    else
        TakeLock(message, question, isError);
}

void LoginManager::TakeAnswerOfBus(sd_bus_message& message, std::uint64_t question, bool isError) {
    const char* owner = nullptr;
    if (question != ownerQuestion_) {
        // Without its rules the connection is deaf.
        if (isError)
            connection_.GiveUp();
    } else if (!isError && sd_bus_message_read_basic(&message, SD_BUS_TYPE_STRING, &owner) > 0) {
        SetOwner(owner);
    }
}

void LoginManager::TakeKind(sd_bus_message& message, bool isError, EventQueue& queue) {
    const char* kind = nullptr;
    std::uint64_t moment = 0;
    const bool isKnown = !isError && sd_bus_message_read(&message, "v", "(st)", &kind, &moment) > 0;
    client_.ScheduledKind(isKnown ? std::optional<std::string>(kind) : std::nullopt, queue);
}

void LoginManager::TakeLock(sd_bus_message& message, std::uint64_t request, bool isError) {
    int descriptor = -1;
    if (!isError && sd_bus_message_read_basic(&message, SD_BUS_TYPE_UNIX_FD, &descriptor) > 0)
        client_.LockGranted(request, InhibitorLock::CopyOf(descriptor));
    else
        client_.LockRefused(request);
}

LoginManager::Message LoginManager::CallOf(const char* destination, const char* path,
                                           const char* interface, const char* member) const {
    sd_bus_message* made = nullptr;
    if (bus_ == nullptr ||
        sd_bus_message_new_method_call(bus_, &made, destination, path, interface, member) < 0)
        return nullptr;
    return Message(made);
}

std::uint64_t LoginManager::AskBus(const char* member, const std::string& argument) {
    const Message call = CallOf(busName, busPath, busName, member);
    if (!call || sd_bus_message_append_basic(call.get(), SD_BUS_TYPE_STRING, argument.c_str()) < 0)
        return 0;
    return Send(call);
}

std::uint64_t LoginManager::Send(const Message& call) {
    std::uint64_t serial = 0;
    if (sd_bus_send(bus_, call.get(), &serial) < 0)
        connection_.GiveUp();
    return serial;
}

} // namespace kqu::platform

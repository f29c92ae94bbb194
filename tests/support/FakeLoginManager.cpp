#include "tests/support/FakeLoginManager.h"

#include <array>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace kqu::testing_support {

namespace {
constexpr const char* name = "org.freedesktop.login1";
constexpr const char* path = "/org/freedesktop/login1";
constexpr const char* interface = "org.freedesktop.login1.Manager";

void Must(int result) {
    if (result < 0)
        throw std::runtime_error("the login manager's stand-in failed");
}

FakeLoginManager& Self(void* self) {
    return *static_cast<FakeLoginManager*>(self);
}
} // namespace

FakeLoginManager::FakeLoginManager(const std::string& busAddress) {
    sd_bus* bus = nullptr;
    Must(sd_bus_new(&bus));
    bus_.reset(bus);
    Must(sd_bus_set_address(bus, busAddress.c_str()));
    Must(sd_bus_set_bus_client(bus, 1));
    Must(sd_bus_start(bus));
    Must(sd_bus_add_object(
        bus, nullptr, path,
        [](sd_bus_message* call, void* self, sd_bus_error* error) {
            if (sd_bus_message_is_method_call(call, interface, "Inhibit") > 0)
                return OnInhibit(call, self, error);
            return OnGet(call, self, error);
        },
        this));
    Must(sd_bus_request_name(bus, name, 0));
}

FakeLoginManager::~FakeLoginManager() {
    open_.clear();
    for (const Lock& lock : locks_)
        close(lock.watched);
}

int FakeLoginManager::OnInhibit(sd_bus_message* call, void* self, sd_bus_error*) {
    FakeLoginManager& manager = Self(self);
    ++manager.requests;
    if (manager.manners == Manners::Hung)
        manager.open_.emplace_back(sd_bus_message_ref(call));
    else
        manager.Grant(call);
    return 1;
}

int FakeLoginManager::OnGet(sd_bus_message* call, void* self, sd_bus_error*) {
    const FakeLoginManager& manager = Self(self);
    if (manager.manners == Manners::Hung)
        return 1;
    if (manager.scheduledKind.empty())
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "No such property");
    return sd_bus_reply_method_return(call, "v", "(st)", manager.scheduledKind.c_str(),
                                      std::uint64_t{1});
}

void FakeLoginManager::Grant(sd_bus_message* call) {
    const char* what = nullptr;
    const char* who = nullptr;
    const char* why = nullptr;
    const char* mode = nullptr;
    Must(sd_bus_message_read(call, "ssss", &what, &who, &why, &mode));
    std::array<int, 2> ends{};
    Must(pipe2(ends.data(), O_CLOEXEC));
    locks_.push_back({std::string(mode) + " " + what + " " + who + " " + why, ends[0]});
    Must(sd_bus_reply_method_return(call, "h", ends[1]));
    close(ends[1]);
}

void FakeLoginManager::Answer() {
    manners = Manners::Prompt;
    for (const Message& call : std::exchange(open_, {}))
        Grant(call.get());
}

std::vector<std::string> FakeLoginManager::Locks() {
    std::vector<std::string> held;
    std::erase_if(locks_, [&](const Lock& lock) {
        pollfd end{lock.watched, 0, 0};
        const bool isDropped = poll(&end, 1, 0) > 0 && (end.revents & POLLHUP) != 0;
        if (isDropped)
            close(lock.watched);
        else
            held.push_back(lock.description);
        return isDropped;
    });
    return held;
}

void FakeLoginManager::Announce(const std::string& signal, bool begins) {
    Must(sd_bus_emit_signal(bus_.get(), path, interface, signal.c_str(), "b", begins ? 1 : 0));
}

void FakeLoginManager::AnnounceKind(bool begins, const std::string& kind) {
    Must(sd_bus_emit_signal(bus_.get(), path, interface, "PrepareForShutdownWithMetadata", "ba{sv}",
                            begins ? 1 : 0, 2, "other", "u", 7U, "type", "s", kind.c_str()));
}

pollfd FakeLoginManager::Watch() const {
    return {sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0};
}

bool FakeLoginManager::Collect(platform::EventQueue&) {
    while (sd_bus_process(bus_.get(), nullptr) > 0)
        ;
    return false;
}

} // namespace kqu::testing_support

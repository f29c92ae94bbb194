#include "tests/support/BusPoster.h"

#include <array>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <grp.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace kqu::testing_support {

namespace {
using Message = platform::CPointer<sd_bus_message, sd_bus_message_unref>;

constexpr const char* path = "/com/brackwater/DistributedNotifications";
constexpr const char* postedInterface = "com.brackwater.DistributedNotifications";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

void Check(int result, const char* what) {
    if (result < 0)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(-result));
}

Message NewSignal(sd_bus* bus, const char* interface, const char* member) {
    sd_bus_message* made = nullptr;
    Check(sd_bus_message_new_signal(bus, &made, path, interface, member), "new signal");
    return Message(made);
}

void AppendNotification(sd_bus_message* message, const std::string& name, const std::string& object,
                        const BusPoster::Texts& texts) {
    Check(sd_bus_message_append(message, "ss", name.c_str(), object.c_str()), "append");
    Check(sd_bus_message_open_container(message, 'a', "{sv}"), "open");
    for (const auto& [key, value] : texts)
        Check(sd_bus_message_append(message, "{sv}", key.c_str(), "s", value.c_str()), "append");
    Check(sd_bus_message_close_container(message), "close");
}
} // namespace

BusPoster::BusPoster(const std::string& address) {
    sd_bus* made = nullptr;
    Check(sd_bus_new(&made), "new bus");
    bus_.reset(made);
    Check(sd_bus_set_address(made, address.c_str()), "address");
    Check(sd_bus_set_bus_client(made, 1), "client");
    Check(sd_bus_start(made), "start");
    AwaitTaken();
}

std::string BusPoster::UniqueName() const {
    const char* name = nullptr;
    Check(sd_bus_get_unique_name(bus_.get(), &name), "unique name");
    return name;
}

void BusPoster::Post(const std::string& name, const std::string& object, const Texts& texts) {
    const Message signal = NewSignal(bus_.get(), postedInterface, "Posted");
    AppendNotification(signal.get(), name, object, texts);
    Check(sd_bus_send(bus_.get(), signal.get(), nullptr), "send");
    AwaitTaken();
}

void BusPoster::PostRaw(const Append& append, const std::string& destination) {
    const Message signal = NewSignal(bus_.get(), postedInterface, "Posted");
    if (!destination.empty())
        Check(sd_bus_message_set_destination(signal.get(), destination.c_str()), "destination");
    Check(append(signal.get()), "append");
    Check(sd_bus_send(bus_.get(), signal.get(), nullptr), "send");
    AwaitTaken();
}

void BusPoster::Send(const std::string& interface, const std::string& member) {
    const Message signal = NewSignal(bus_.get(), interface.c_str(), member.c_str());
    AppendNotification(signal.get(), "KQS_disk.stray", "KQMS", {});
    Check(sd_bus_send(bus_.get(), signal.get(), nullptr), "send");
    AwaitTaken();
}

void BusPoster::Flood(int count) {
    for (int number = 0; number < count; ++number) {
        const Message signal = NewSignal(bus_.get(), postedInterface, "Posted");
        AppendNotification(signal.get(), "KQS_disk." + std::to_string(number), "KQMS",
                           {{"PID", "4711"}, {"Progress", "250"}, {"Item", "/srv/data/a.bin"}});
        Check(sd_bus_send(bus_.get(), signal.get(), nullptr), "send");
        if (number % 1000 == 999)
            Check(sd_bus_flush(bus_.get()), "flush");
    }
    AwaitTaken();
}

std::vector<std::pair<std::string, int>> BusPoster::Listeners() {
    sd_bus_message* answer = nullptr;
    Check(sd_bus_call_method(bus_.get(), busName, busPath, "org.freedesktop.DBus.Debug.Stats",
                             "GetAllMatchRules", nullptr, &answer, ""),
          "match rules");
    const Message reply(answer);
    std::vector<std::pair<std::string, int>> listeners;
    const char* name = nullptr;
    const char* rule = nullptr;
    Check(sd_bus_message_enter_container(answer, 'a', "{sas}"), "enter");
    while (sd_bus_message_enter_container(answer, 'e', "sas") > 0) {
        Check(sd_bus_message_read(answer, "s", &name), "read");
        Check(sd_bus_message_enter_container(answer, 'a', "s"), "enter");
        int rules = 0;
        bool isListener = false;
        for (; sd_bus_message_read(answer, "s", &rule) > 0; ++rules)
            isListener = isListener || std::strstr(rule, postedInterface) != nullptr;
        if (isListener)
            listeners.emplace_back(name, rules);
        sd_bus_message_exit_container(answer);
        sd_bus_message_exit_container(answer);
    }
    return listeners;
}

/// The bus answers in order, so its answer tells that it has dealt with all that went before.
void BusPoster::AwaitTaken() {
    Check(sd_bus_call_method(bus_.get(), busName, busPath, busName, "GetId", nullptr, nullptr, ""),
          "the bus's answer");
}

OtherProcess::OtherProcess(const std::string& address, unsigned user,
                           const std::function<void(BusPoster&)>& work) {
    std::array<int, 2> told{};
    std::array<int, 2> leash{};
    if (pipe2(told.data(), O_CLOEXEC) != 0 || pipe2(leash.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    told_ = told[0];
    leash_ = leash[1];
    process_ = fork();
    if (process_ == 0) {
        close(leash[1]);
        try {
            if (user != sameUser &&
                (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0))
                _exit(1);
            BusPoster poster(address);
            work(poster);
            const std::string name = poster.UniqueName() + "\n";
            char byte = 0;
            if (write(told[1], name.data(), name.size()) > 0)
                static_cast<void>(read(leash[0], &byte, 1) + 0);
        } catch (const std::exception&) {
            _exit(1);
        }
        _exit(0);
    }
    close(told[1]);
    close(leash[0]);
}

OtherProcess::~OtherProcess() {
    close(leash_);
    close(told_);
    waitpid(process_, nullptr, 0);
}

std::string OtherProcess::AwaitDone() {
    std::string name;
    for (char byte = 0; read(told_, &byte, 1) == 1 && byte != '\n';)
        name += byte;
    if (name.empty())
        throw std::runtime_error("the other process failed");
    return name;
}

} // namespace kqu::testing_support

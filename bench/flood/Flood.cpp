#include "platform/CDeleter.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

// Posts updates of the three tools as fast as the bus takes them, each with texts of its own:
//
//     kqu_flood ADDRESS FIRST COUNT NAME=PID...
//
// The updates are numbered from FIRST on and go round the names; after each round the tools change
// places. The program ends when the bus has taken all of them.

namespace {

using BusPointer = kqu::platform::CPointer<sd_bus, sd_bus_close_unref>;
using MessagePointer = kqu::platform::CPointer<sd_bus_message, sd_bus_message_unref>;

constexpr const char* path = "/com/brackwater/DistributedNotifications";
constexpr const char* interfaceName = "com.brackwater.DistributedNotifications";
/// Updates between two waits for the socket.
constexpr int batch = 128;

void Check(int result) {
    if (result < 0)
        throw std::runtime_error("kqu_flood: the bus failed: " + std::to_string(result));
}

BusPointer Connect(const char* address) {
    sd_bus* bus = nullptr;
    Check(sd_bus_new(&bus));
    BusPointer owned(bus);
    Check(sd_bus_set_address(bus, address));
    Check(sd_bus_set_bus_client(bus, 1));
    Check(sd_bus_start(bus));
    return owned;
}

struct Row {
    std::string name;
    std::string pid;
};

void Post(sd_bus* bus, const Row& row, long number, long round) {
    sd_bus_message* made = nullptr;
    Check(sd_bus_message_new_signal(bus, &made, path, interfaceName, "Posted"));
    const MessagePointer signal(made);
    const std::string text = "/srv/data/some folder \u00e4/file " + std::to_string(number);
    const std::string progress = std::to_string(number % 1000);
    const char* const wish = number % 2 == 0 ? "sleep" : "shutdown";
    switch (round % 3) {
    case 0:
        Check(sd_bus_message_append(made, "ssa{sv}", row.name.c_str(), "KQMS", 5, "PID", "s",
                                    row.pid.c_str(), "Progress", "s", progress.c_str(), "Item", "s",
                                    text.c_str(), "VolName", "s", row.name.c_str(), "Extra", "s",
                                    wish));
        break;
    case 1:
        Check(sd_bus_message_append(made, "ssa{sv}", row.name.c_str(), "KQBackup", 5, "PID", "s",
                                    row.pid.c_str(), "Progress", "s", progress.c_str(), "status",
                                    "s", text.c_str(), "dVolName", "s", text.c_str(), "Type", "s",
                                    number % 2 == 0 ? "4" : "1"));
        break;
    default:
        Check(sd_bus_message_append(made, "ssa{sv}", row.name.c_str(), "KQDefrag", 5, "PID", "s",
                                    row.pid.c_str(), "status", "s", "defrag", "FileProgress", "s",
                                    std::to_string(number % 100).c_str(), "FileName", "s",
                                    text.c_str(), "BSD", "s", "disk9"));
    }
    Check(sd_bus_send(bus, made, nullptr));
}

void Flood(sd_bus* bus, long first, long count, const std::vector<Row>& rows) {
    const auto size = static_cast<long>(rows.size());
    for (long number = first; number < first + count; ++number) {
        const auto index = static_cast<std::size_t>(number % size);
        Post(bus, rows[index], number, number / size + static_cast<long>(index));
        if (number % batch == 0)
            Check(sd_bus_flush(bus));
    }
    // The bus answers in order: after this it has taken every one of them.
    sd_bus_message* answer = nullptr;
    Check(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "GetId", nullptr, &answer, ""));
    sd_bus_message_unref(answer);
}

} // namespace

int main(int count, char** arguments) {
    try {
        std::vector<Row> rows;
        for (int index = 4; index < count; ++index) {
            const std::string row = arguments[index];
            rows.push_back({row.substr(0, row.rfind('=')), row.substr(row.rfind('=') + 1)});
        }
        if (rows.empty())
            throw std::runtime_error("usage: kqu_flood ADDRESS FIRST COUNT NAME=PID...");
        const BusPointer bus = Connect(arguments[1]);
        Flood(bus.get(), std::atol(arguments[2]), std::atol(arguments[3]), rows);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

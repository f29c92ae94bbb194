#include "bench/Allocations.h"
#include "framework/corefoundation/CFValues.h"
#include "tests/support/SimulatedMachine.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <malloc.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace std::chrono_literals;
using simulation::PostedNotification;
using simulation::SimulatedMachine;
using simulation::WireDictionary;

constexpr int rows = 10;
/// Different updates of one row before the first one comes again.
constexpr int updatesOfRow = 64;
/// How many updates a busy machine posts between two looks of the loop.
constexpr int burst = 100;

enum class Tool { Scanner, Backup, Defragmenter };

std::string ObjectOf(Tool tool) {
    switch (tool) {
    case Tool::Scanner:
        return "KQMS";
    case Tool::Backup:
        return "KQBackup";
    case Tool::Defragmenter:
        return "KQDefrag";
    }
    return {};
}

/// What a tool sends with its update of that number: all that it ever sends, as text.
WireDictionary UserInfo(Tool tool, int number) {
    const std::string count = std::to_string(number);
    const std::string path = "/srv/data/projects/2024/some file name " + count;
    switch (tool) {
    case Tool::Scanner:
        return {{"PID", "1"},   {"Progress", count}, {"VolName", "Data"},  {"ScanType", "0"},
                {"Item", path}, {"BSD", "sda1"},     {"Extra", "shutdown"}};
    case Tool::Backup:
        return {
            {"PID", "1"},         {"Progress", count}, {"VolName", "Data"}, {"dVolName", "Archive"},
            {"status", path},     {"BSD", "sda1"},     {"Extra", "sleep"},  {"Type", "4"},
            {"FolderBackup", "1"}};
    case Tool::Defragmenter:
        return {{"PID", "1"},         {"FileProgress", count}, {"status", "Defragmenting"},
                {"FileName", path},   {"BSD", "sda1"},         {"NumFilesExamined", count},
                {"Extra", "shutdown"}};
    }
    return {};
}

/// Updates of all rows in turn.
std::vector<PostedNotification> Updates(Tool tool) {
    std::vector<PostedNotification> updates;
    for (int number = 0; number < updatesOfRow; ++number)
        for (int row = 0; row < rows; ++row)
            updates.push_back({"KQS_disk.task " + std::to_string(row), ObjectOf(tool),
                               UserInfo(tool, number * rows + row)});
    return updates;
}

/// A machine on which the rows of a tool are there and nothing but updates will follow.
void Prepare(SimulatedMachine& machine, const std::vector<PostedNotification>& updates) {
    // By which the defragmenter's disk is known.
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup",
                      "sda1:Data:100000\r");
    machine.Start();
    for (int row = 0; row < rows; ++row)
        machine.centre.Post(updates[static_cast<std::size_t>(row)]);
    machine.Advance(2s);
}

/// One update, as it comes out of the notification centre.
struct Converted {
    Ref<CFString> name;
    Ref<CFObject> object;
    Ref<CFDictionary> userInfo;
};

std::vector<Converted> Convert(const std::vector<PostedNotification>& updates) {
    std::vector<Converted> converted;
    for (const PostedNotification& update : updates) {
        CFDictionary::Entries entries;
        for (const auto& [key, value] : *update.userInfo)
            entries.emplace_back(key, CFString::Make(std::get<std::string>(value)));
        converted.push_back({CFString::Make(*update.name),
                             CFString::Make(std::get<std::string>(*update.object)),
                             CFDictionary::Make(std::move(entries))});
    }
    return converted;
}

/// The handlers alone: each pass is one update.
void HandleUpdate(benchmark::State& state, Tool tool) {
    SimulatedMachine machine;
    const auto updates = Updates(tool);
    Prepare(machine, updates);
    const auto converted = Convert(updates);
    std::size_t next = 0;
    {
        const bench::AllocationCount count(state);
        for (auto _ : state) {
            const Converted& update = converted[next];
            machine.Panel().DiskNotification_Received(update.name, update.object, update.userInfo);
            next = (next + 1) % converted.size();
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(HandleUpdate, scanner, Tool::Scanner);
BENCHMARK_CAPTURE(HandleUpdate, backup, Tool::Backup);
BENCHMARK_CAPTURE(HandleUpdate, defragmenter, Tool::Defragmenter);

void PostBurst(SimulatedMachine& machine, const std::vector<PostedNotification>& updates,
               std::size_t& next) {
    for (int i = 0; i < burst; ++i) {
        machine.centre.Post(updates[next]);
        next = (next + 1) % updates.size();
    }
}

/// From what the bus has decoded to the task table, through the loop: each pass is one burst.
void TakeInUpdates(benchmark::State& state, Tool tool) {
    SimulatedMachine machine;
    const auto updates = Updates(tool);
    Prepare(machine, updates);
    std::size_t next = 0;
    for (auto _ : state) {
        PostBurst(machine, updates, next);
        machine.Advance();
    }
    state.SetItemsProcessed(state.iterations() * burst);
}
BENCHMARK_CAPTURE(TakeInUpdates, scanner, Tool::Scanner);
BENCHMARK_CAPTURE(TakeInUpdates, backup, Tool::Backup);
BENCHMARK_CAPTURE(TakeInUpdates, defragmenter, Tool::Defragmenter);

double ResidentKiB() {
    std::ifstream file("/proc/self/statm");
    double whole = 0;
    double resident = 0;
    file >> whole >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024.0;
}

void ReportMemory(benchmark::State& state, const std::string& when) {
    state.counters["resident KiB " + when] = ResidentKiB();
    state.counters["used KiB " + when] = static_cast<double>(mallinfo2().uordblks) / 1024.0;
}

/// A long evening: a million updates over half an hour, with the repaints and the looks at the
/// process list that come in between. Reports the memory before and after: what is resident, and
/// what is in use of it, which no earlier benchmark can hide.
void TakeInAMillion(benchmark::State& state) {
    constexpr int million = 1'000'000;
    constexpr int settling = million / 20;
    SimulatedMachine machine;
    std::vector<PostedNotification> updates;
    for (const Tool tool : {Tool::Scanner, Tool::Backup, Tool::Defragmenter})
        for (PostedNotification& update : Updates(tool))
            updates.push_back(std::move(update));
    Prepare(machine, updates);
    std::size_t next = 0;
    const auto takeIn = [&](int count) {
        for (int posted = 0; posted < count; posted += burst) {
            PostBurst(machine, updates, next);
            machine.Advance(200ms);
            // The simulated machine's own records.
            machine.windows.calls.clear();
            machine.processes.started.clear();
        }
    };
    takeIn(settling);
    ReportMemory(state, "before");
    for (auto _ : state)
        takeIn(million);
    ReportMemory(state, "after");
    state.SetItemsProcessed(state.iterations() * million);
}
BENCHMARK(TakeInAMillion)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
} // namespace kqu

#include "tests/lives/World.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kqu::lives {

namespace {
const std::string preferencesFile =
    "Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";
const char* const catCommand =
    R"(/bin/cat /Library/Application\ Support/Brackwater\ Utilities\ Support/BrackwaterPrefs.plist)";
constexpr std::int32_t failure = -35;
constexpr int firstProcess = 11;
constexpr int processCount = 11;

template <std::size_t size>
int Pick(const std::array<int, size>& choices, int value) {
    return choices[static_cast<std::size_t>(value) % size];
}
} // namespace

World::World() {
    using namespace kqu::functions;
    auto& table = machine.functions;
    for (int process = firstProcess; process < firstProcess + processCount; ++process)
        machine.processes.living.insert(process);
    machine.processes.commands[listCommand] = [this] { return output = List(); };
    table.Set<IOPSCopyPowerSourcesInfo>(
        [this] { return hasSources ? machine.handles.AddBlob("sources") : 0; });
    table.Set<IOPSGetProvidingPowerSourceType>([this](std::int32_t blob) {
        if (!source || machine.handles.Blob(blob) == nullptr)
            return 0;
        sourceNames.insert(*source);
        return machine.handles.UnownedText(*source);
    });
    table.Set<FSGetVolumeInfo>(
        [this, ask = table.Find<FSGetVolumeInfo>()](auto volume, auto index, auto* actual,
                                                    auto which, std::byte* info, auto*... more) {
            if (volumeInfoFails)
                return failure;
            const std::int32_t status = (*ask)(volume, index, actual, which, info, more...);
            if (info != nullptr)
                std::memcpy(info + 32, &filesOnVolume, sizeof filesOnVolume);
            return status;
        });
    table.Set<FSCopyDiskIDForVolume>(
        [this, ask = table.Find<FSCopyDiskIDForVolume>()](std::int32_t volume, std::int32_t* disk) {
            return diskNameFails ? failure : (*ask)(volume, disk);
        });
    LearnKinds();
    LearnFiles();
}

template <class... F>
void World::Keep() {
    auto& table = machine.functions;
    (functions_.emplace_back([&table] { table.Remove<F>(); },
                             [&table, entry = table.Find<F>()] { table.Set<F>(*entry); }),
     ...);
}

void World::KeepFunctions() {
    using namespace kqu::functions;
    Keep<IsWindowCollapsed, UpdateCollapsedWindowDockTile, SetWindowAlpha, DisableScreenUpdates,
         EnableScreenUpdates, SizeWindow, DragWindow, popen, feof, fread, ferror, pclose,
         FSGetVolumeInfo, FSCopyDiskIDForVolume, CFStringGetCStringOfCarbon, CFRelease,
         CFStringGetCString, IOPSGetProvidingPowerSourceType, IOPSCopyPowerSourcesInfo,
         MountedVolumes>();
}

void World::Remove(int which) {
    const int count = static_cast<int>(functions_.size());
    functions_[static_cast<std::size_t>((which % count + count) % count)].first();
}

void World::Restore() const {
    for (const auto& [remove, restore] : functions_)
        restore();
}

std::string World::Read(const std::string& path) const {
    std::ifstream file(machine.tree.Root() / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void World::LetAllEnd() {
    Restore();
    list = ListMode::Fine;
    delay = {};
    machine.processes.living.clear();
}

std::string World::List() const {
    const std::string fine = machine.processes.List();
    const std::string printed[] = {
        fine, "", "12\n 13x\n1 4 \n15 \n\n \x01\xFF 16\n17\n", fine.substr(0, fine.size() - 1),
        // A single zero behind the header stays; a pair ends the chunk.
        "PID\n" + std::string(1, '\0') + fine.substr(0, fine.size() / 2) + std::string(2, '\0') +
            fine,
        std::string(chunkSize - fine.size() / 2, '\n') + fine};
    const auto mode = static_cast<std::size_t>(list);
    return mode < std::size(printed) ? printed[mode] : fine;
}

void World::LearnKinds() {
    auto& windows = machine.windows;
    kinds["Process"] = [this](const Values& values) {
        const int process = firstProcess + values[0] % processCount;
        if (values[1] % 3 == 0)
            machine.processes.living.insert(process);
        else
            machine.processes.living.erase(process);
    };
    kinds["Source"] = [this](const Values& values) { SetSource(values[0] % 8); };
    kinds["Mount"] = [this](const Values& values) { Mount(values[0] % 8); };
    kinds["Trouble"] = [this](const Values& values) {
        const int value = values[0] % 5;
        volumeInfoFails = value == 1;
        diskNameFails = value == 2;
        Restore();
        if (value > 2)
            Remove(2 - value);
    };
    kinds["Function"] = [this](const Values& values) {
        Remove(values[0]);
        machine.At(machine.time.SinceStart() + std::chrono::milliseconds(values[1] % 8000),
                   [this] { Restore(); });
    };
    kinds["Commands"] = [this](const Values& values) {
        // Fine as often as not.
        constexpr int modes = static_cast<int>(ListMode::ReadError) + 1;
        list = static_cast<ListMode>(values[0] % 2 * (values[1] % modes));
        delay = std::chrono::milliseconds(values[3] % (values[2] % 3 == 0 ? 5000 : 50));
    };
    kinds["Collapse"] = [&](const Values& values) {
        windows.window->collapsed = values[0] % 2 == 0;
    };
    kinds["Jump"] = [this](const Values& values) {
        machine.time.Pass(
            std::chrono::milliseconds(values[0] % (values[0] % 2 == 0 ? 4000 : 150000)));
    };
    kinds["Screen"] = [&](const Values& values) {
        constexpr std::array heights{800, 150, 187, 188, 260, 261, 333, 480, 2000};
        windows.screens = {{0, 0, 1280 + values[0] % 3, Pick(heights, values[0])}};
    };
    kinds["Echo"] = [&](const Values& values) {
        windows.echo = static_cast<simulation::SizeEcho>(values[0] % 3);
    };
}

void World::SetSource(int value) {
    constexpr std::array names{"AC Power", "Battery Power", "UPS Power", "", "mains ac"};
    hasSources = value != 7;
    source.reset();
    if (value < 5)
        source = names.at(static_cast<std::size_t>(value));
    // One byte more than fits.
    if (value == 5)
        source = "AC" + std::string(98, '_');
}

void World::Mount(int which) {
    mounted = which;
    machine.tree.UnmountAll();
    for (std::size_t i = 0; i < disks.size(); ++i)
        if ((which >> i & 1) != 0)
            machine.tree.Mount(disks[i].number, disks[i].disk, disks[i].place);
}

void World::LearnFiles() {
    kinds["LookUpFile"] = [this](const Values& values) {
        machine.tree.Write(lookUpFile,
                           std::string("SDB9:No:1\r\n") +
                               (values[0] % 2 == 0 ? "\rSda1:Looked Up:400.9:" : "\rx:"));
    };
    kinds["Folder"] = [this](const Values& values) { MakeFolder(values[0] % 2 == 0); };
    kinds["Place"] = [this](const Values& values) { WritePlace(values); };
    kinds["Preferences"] = [this](const Values& values) { WritePreferences(values); };
}

void World::MakeFolder(bool isThere) {
    preferencesFolder = isThere;
    const auto folder = machine.tree.Root() / "home/.config";
    if (isThere) {
        std::filesystem::create_directories(folder);
        return;
    }
    std::filesystem::remove_all(folder);
    place.reset();
}

void World::WritePlace(const Values& values) {
    std::string text;
    // On the limits as often as not.
    const platform::Rect screen = machine.windows.screens[0];
    const auto edge = [](int value, int size) {
        return value % 2 == 0 ? Pick(std::array{0, 1, size - 10, size - 11}, value / 2)
                              : value % (size + 100) - 50;
    };
    for (const int value :
         {edge(values[0], screen.width), edge(values[1], screen.height), values[2] % 700})
        text += "<integer>" + std::to_string(value) + "</integer>";
    MakeFolder(true);
    machine.tree.Write(placeFile, text);
}

void World::WritePreferences(const Values& values) {
    std::string text = R"(<?xml version="1.0"?><plist version="1.0"><dict>)";
    const auto add = [&](bool& setting, const char* key, int bit) {
        setting = (values[0] >> bit & 1) != 0;
        text += std::string("<key>") + key + (setting ? "</key><true/>" : "</key><false/>");
    };
    add(switches.prevent, "PreventScheduleOnBatt", 0);
    add(switches.sleepOnBatt, "SleepOnBatt", 1);
    add(switches.sleepOnAC, "SleepOnAC", 2);
    isSibling = values[1] % 4 == 0;
    text += std::string("<key>ParentLocation</key>\n<string>/Applications/") +
            (isSibling ? "Marlstone Pro" : "Brackwater") + ".app</string></dict></plist>";
    machine.tree.Write(preferencesFile, text);
    machine.processes.commands[catCommand] = [this, text] { return output = text; };
}

} // namespace kqu::lives

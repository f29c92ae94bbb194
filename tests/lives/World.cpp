#include "tests/lives/World.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kqu::lives {

namespace {
using simulation::SizeEcho;

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
    table.Set<FSGetVolumeInfo>([this, ask = table.Find<FSGetVolumeInfo>()](
                                   std::int32_t volume, std::uint32_t index, std::int32_t* actual,
                                   std::uint32_t which, std::byte* info, std::u16string* name,
                                   std::byte* directory) {
        if (volumeInfoFails)
            return failure;
        const std::int32_t status = (*ask)(volume, index, actual, which, info, name, directory);
        if (info != nullptr)
            std::memcpy(info + 32, &filesOnVolume, sizeof filesOnVolume);
        return status;
    });
    table.Set<FSCopyDiskIDForVolume>(
        [this, ask = table.Find<FSCopyDiskIDForVolume>()](std::int32_t volume, std::int32_t* disk) {
            return diskNameFails ? failure : (*ask)(volume, disk);
        });
}

std::string World::Read(const std::string& path) const {
    std::ifstream file(machine.tree.Root() / path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void World::LetAllEnd() {
    removable->Restore();
    list = ListMode::Fine;
    delay = {};
    machine.processes.living.clear();
}

std::string World::List() const {
    const std::string fine = machine.processes.List();
    switch (list) {
    case ListMode::Empty:
        return "";
    case ListMode::Garbage:
        return "12\n 13x\n1 4 \n15 \n\n \x01\xFF 16\n17\n";
    case ListMode::Unended:
        return fine.substr(0, fine.size() - 1);
    case ListMode::Nuls:
        // A single one behind the header stays; a pair ends the chunk.
        return "PID\n" + std::string(1, '\0') + fine.substr(0, fine.size() / 2) +
               std::string(2, '\0') + fine;
    case ListMode::Long:
        return std::string(chunkSize - fine.size() / 2, '\n') + fine;
    default:
        return fine;
    }
}

void World::Happen(const Event& event) {
    const int value = event.values[0];
    auto& windows = machine.windows;
    switch (event.kind) {
    case Kind::Process:
        if (event.values[1] % 3 == 0)
            machine.processes.living.insert(firstProcess + value % processCount);
        else
            machine.processes.living.erase(firstProcess + value % processCount);
        break;
    case Kind::Source:
        SetSource(value % 8);
        break;
    case Kind::Mount:
        Mount(value % 8);
        break;
    case Kind::Trouble:
        MakeTrouble(value % 5);
        break;
    case Kind::Function:
        removable->Remove(value);
        machine.At(machine.time.SinceStart() + std::chrono::milliseconds(event.values[1] % 8000),
                   [this] { removable->Restore(); });
        break;
    case Kind::Commands:
        SetCommands(event.values);
        break;
    case Kind::Collapse:
        windows.window->collapsed = value % 2 == 0;
        break;
    case Kind::Jump:
        machine.time.Pass(std::chrono::milliseconds(value % (value % 2 == 0 ? 4000 : 150000)));
        break;
    case Kind::Screen:
        windows.screens = {{0, 0, 1280 + value % 3,
                            Pick(std::array{800, 150, 187, 188, 260, 261, 333, 480, 2000}, value)}};
        break;
    case Kind::Echo:
        windows.echo = static_cast<SizeEcho>(value % 3);
        break;
    case Kind::LookUpFile:
        WriteLookUpFile(value % 2 == 0);
        break;
    case Kind::Folder:
        MakeFolder(value % 2 == 0);
        break;
    case Kind::Place:
        WritePlace(event.values);
        break;
    case Kind::Preferences:
        WritePreferences(event.values);
        break;
    default:
        break;
    }
}

void World::SetCommands(const std::array<int, 4>& values) {
    // Fine as often as not.
    constexpr int modes = static_cast<int>(ListMode::ReadError) + 1;
    list = static_cast<ListMode>(values[0] % 2 * (values[1] % modes));
    delay = std::chrono::milliseconds(values[3] % (values[2] % 3 == 0 ? 5000 : 50));
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

void World::MakeTrouble(int value) {
    volumeInfoFails = value == 1;
    diskNameFails = value == 2;
    removable->Restore();
    if (value > 2)
        removable->Remove(2 - value);
}

void World::Mount(int which) {
    mounted = which;
    machine.tree.UnmountAll();
    for (std::size_t i = 0; i < disks.size(); ++i)
        if ((which >> i & 1) != 0)
            machine.tree.Mount(disks[i].number, disks[i].disk, disks[i].place);
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

void World::WriteLookUpFile(bool knows) {
    lookUpFile = knows;
    machine.tree.Write("Application Support/Brackwater Utilties Support/BSDLookup",
                       std::string("SDB9:No:1\r\n") + (knows ? "\rSda1:Looked Up:400.9:" : "\rx:"));
}

void World::WritePlace(const std::array<int, 4>& values) {
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

void World::WritePreferences(const std::array<int, 4>& values) {
    std::string text = R"(<?xml version="1.0"?><plist version="1.0"><dict>)";
    const auto add = [&](bool& setting, const char* key, int bit) {
        setting = (values[0] >> bit & 1) != 0;
        text += std::string("<key>") + key + (setting ? "</key><true/>" : "</key><false/>");
    };
    add(preventScheduleOnBattery, "PreventScheduleOnBatt", 0);
    add(sleepOnBattery, "SleepOnBatt", 1);
    add(sleepOnAC, "SleepOnAC", 2);
    isSibling = values[1] % 4 == 0;
    text += std::string("<key>ParentLocation</key>\n<string>/Applications/") +
            (isSibling ? "Marlstone Pro" : "Brackwater") + ".app</string></dict></plist>";
    machine.tree.Write(preferencesFile, text);
    machine.processes.commands[catCommand] = [this, text] { return output = text; };
}

} // namespace kqu::lives

#pragma once

#include "platform/functions/Functions.h"
#include "tests/lives/Life.h"
#include "tests/oracle/Rules.h"
#include "tests/support/MachineWithVolumes.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kqu::lives {

/// Why the program has to end: raised by whoever works out what it must do.
struct Ends {
    std::string reason;
};

/// What the command that lists processes does.
enum class ListMode { Fine, Empty, Garbage, Unended, Nuls, Long, NoStream, BadStream, ReadError };

/// The machine of one life, and what the program may find out about it.
class World {
  public:
    /// Files in use on each volume.
    static constexpr std::uint32_t filesOnVolume = 10000;
    struct Disk {
        const char* number;
        const char* disk;
        const char* place;
        const char* name;
    };
    static constexpr std::array<Disk, 3> disks{{{"8:1", "sda1", "/", "/"},
                                                {"8:17", "sdb1", "/media/My Disk", "Photos"},
                                                {"8:33", "sdc1", "/media/Spare", "Spare"}}};
    static constexpr const char* placeFile = "home/.config/com.brackwater.KQU_Messenger.plist";
    static constexpr const char* lookUpFile =
        "Application Support/Brackwater Utilties Support/BSDLookup";
    static constexpr const char* listCommand = "/bin/ps -ax -o 'pid'";
    static constexpr std::size_t chunkSize = 2048;

    World();

    /// What happens at the events of each kind; those that the program is told of are the player's.
    std::map<std::string, std::function<void(const Values&)>> kinds;
    /// From now on the functions can be made not to be found for a while, and restored as they are.
    void KeepFunctions();
    /// Every function is there again, and all processes have ended.
    void LetAllEnd();

    /// The text of one of the machine's files; empty if it is not there.
    [[nodiscard]] std::string Read(const std::string& path) const;
    /// Raises Ends if that function cannot be found at this moment.
    template <class F>
    void Need() const {
        if (!Has<F>())
            throw Ends{std::string(F::name) + " cannot be found"};
    }
    template <class F>
    [[nodiscard]] bool Has() const {
        return machine.functions.Find<F>() != nullptr;
    }

    simulation::MachineWithVolumes machine;
    /// One bit for each of the disks.
    int mounted = 3;
    bool volumeInfoFails = false, diskNameFails = false, preferencesFolder = false;
    /// What the file of the panel's place must hold, once the program has written it.
    std::optional<std::string> place;
    bool isSibling = false;
    oracle::PowerSwitches switches{true, true, false};
    bool hasSources = true;
    /// The name of the power source: none for a source without a name.
    oracle::Source source = "AC Power";
    /// All names that were ever asked for.
    std::set<std::string> sourceNames;
    ListMode list = ListMode::Fine;
    /// How long each read from a command takes.
    std::chrono::milliseconds delay{};
    /// What the latest command printed.
    std::string output;

  private:
    template <class... F>
    void Keep();
    /// Takes a function away, counted round from 0; -1 and -2 are those that the program can do
    /// without.
    void Remove(int which);
    void Restore() const;
    void LearnKinds();
    void LearnFiles();
    [[nodiscard]] std::string List() const;
    void SetSource(int value);
    void Mount(int disks);
    void MakeFolder(bool isThere);
    void WritePlace(const Values& values);
    void WritePreferences(const Values& values);

    std::vector<std::pair<std::function<void()>, std::function<void()>>> functions_;
};

} // namespace kqu::lives

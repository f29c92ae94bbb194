#include "framework/files/KnownFolders.h"

#include "framework/FunctionLookup.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace kqu {

namespace {
/// Taken before anything can change the identity.
const uid_t userAtStart = getuid();

std::string FromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string HomeOfAccount() {
    const passwd* account = getpwuid(getuid());
    return account != nullptr ? account->pw_dir : "";
}

/// The list as the platform has it now; it may change from one call to the next.
std::vector<platform::MountedVolume> Mounted() {
    if (!IsFunctionAvailable<functions::MountedVolumes>())
        return {};
    return Lookup<functions::MountedVolumes>()();
}
} // namespace

Ref<FolderItem> PreferencesFolder() {
    const bool environmentIsTheUsers = getuid() == userAtStart;
    if (environmentIsTheUsers)
        // A relative path is invalid by the rules and is ignored.
        if (auto folder = GetFolderItem(FromEnvironment("XDG_CONFIG_HOME"), PathForm::Absolute))
            return folder;
    std::string home = environmentIsTheUsers ? FromEnvironment("HOME") : std::string();
    if (home.empty())
        home = HomeOfAccount();
    const Ref<FolderItem> folder = GetFolderItem(home, PathForm::Absolute);
    return folder ? folder->Child(".config") : nullptr;
}

Ref<FolderItem> BundleFolder() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return nullptr;
    return std::make_shared<FolderItem>(program.parent_path().parent_path() / "share" /
                                        "kqu-messenger");
}

int VolumeCount() {
    return static_cast<int>(Mounted().size());
}

Ref<FolderItem> Volume(int index) {
    const auto mounted = Mounted();
    if (index < 0 || index >= std::ssize(mounted))
        return nullptr;
    return std::make_shared<FolderItem>(mounted[static_cast<std::size_t>(index)]);
}

} // namespace kqu

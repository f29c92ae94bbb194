#include "framework/files/SpecialFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
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
    constexpr std::size_t recordSize = 16384;
    std::vector<char> buffer(recordSize);
    struct passwd account = {};
    struct passwd* found = nullptr;
    if (getpwuid_r(getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr)
        return {};
    return account.pw_dir;
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

} // namespace kqu

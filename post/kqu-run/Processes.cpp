#include "post/kqu-run/Processes.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kqu::run {

namespace {
namespace files = std::filesystem;
constexpr std::size_t longestName = 15;

files::path FolderOf(pid_t process) {
    return files::path("/proc") / std::to_string(process);
}

std::optional<std::uint64_t> FieldOf(const files::path& path, std::string_view field) {
    std::ifstream file(path);
    std::string name;
    std::uint64_t value = 0;
    while (file >> name) {
        if (name == field && file >> value)
            return value;
        file.ignore(256, '\n');
    }
    return std::nullopt;
}
} // namespace

std::vector<pid_t> Family(pid_t root) {
    std::vector<pid_t> family{root};
    for (std::size_t i = 0; i < family.size(); ++i) {
        std::error_code failure;
        for (const auto& thread :
             files::directory_iterator(FolderOf(family[i]) / "task", failure)) {
            std::ifstream children(thread.path() / "children");
            pid_t child = 0;
            while (children >> child)
                family.push_back(child);
        }
    }
    return family;
}

pid_t FindProcess(pid_t root, std::string_view name) {
    for (const pid_t process : Family(root)) {
        std::ifstream file(FolderOf(process) / "comm");
        std::string found;
        std::getline(file, found);
        if (found == name.substr(0, longestName))
            return process;
    }
    return 0;
}

std::optional<std::uint64_t> PositionOf(pid_t process, int descriptor) {
    return FieldOf(FolderOf(process) / "fdinfo" / std::to_string(descriptor), "pos:");
}

std::optional<std::uint64_t> BytesReadBy(pid_t process) {
    return FieldOf(FolderOf(process) / "io", "rchar:");
}

std::vector<OpenFile> OpenFilesOf(pid_t process) {
    std::vector<OpenFile> found;
    std::error_code failure;
    for (const auto& link : files::directory_iterator(FolderOf(process) / "fd", failure)) {
        const files::path target = files::read_symlink(link.path(), failure);
        const std::string path = target.string();
        if (!failure && target.is_absolute() && !path.starts_with("/dev/pts/") &&
            !path.starts_with("/dev/tty"))
            found.push_back({std::atoi(link.path().filename().c_str()), path});
    }
    std::sort(found.begin(), found.end(),
              [](const OpenFile& a, const OpenFile& b) { return a.descriptor < b.descriptor; });
    return found;
}

} // namespace kqu::run

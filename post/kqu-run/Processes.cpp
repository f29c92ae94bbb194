#include "post/kqu-run/Processes.h"

#include "post/kqu-run/Volumes.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace kqu::run {

namespace {
namespace files = std::filesystem;

files::path FolderOf(pid_t process) {
    return files::path("/proc") / std::to_string(process);
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
        if (found == name.substr(0, 15))
            return process;
    }
    return 0;
}

std::optional<Amounts> AmountsOf(pid_t process) {
    std::ifstream file(FolderOf(process) / "io");
    Amounts amounts;
    std::string field;
    file >> field >> amounts.read >> field >> amounts.written;
    return file ? std::optional(amounts) : std::nullopt;
}

std::vector<std::string> ArgumentsOf(pid_t process) {
    std::ifstream file(FolderOf(process) / "cmdline");
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');)
        arguments.push_back(argument);
    return arguments;
}

std::string WorkingFolderOf(pid_t process) {
    std::error_code failure;
    return files::read_symlink(FolderOf(process) / "cwd", failure).string();
}

std::vector<OpenFile> OpenFilesOf(pid_t process) {
    std::vector<OpenFile> found;
    std::error_code failure;
    for (const auto& link : files::directory_iterator(FolderOf(process) / "fd", failure)) {
        const files::path target = files::read_symlink(link.path(), failure);
        const std::string path = target.string();
        struct stat status {};
        if (failure || !target.is_absolute() || path.starts_with("/dev/pts/") ||
            path.starts_with("/dev/tty") || stat(link.path().c_str(), &status) != 0)
            continue;
        OpenFile file{std::atoi(link.path().filename().c_str()), path, 0, false, {}, 0};
        file.identity = {status.st_dev, status.st_ino};
        file.size = SizeOf(link.path()).value_or(0);
        std::ifstream info(FolderOf(process) / "fdinfo" / link.path().filename());
        unsigned flags = 0;
        std::string field;
        info >> field >> file.position >> field >> std::oct >> flags;
        file.isWritten = (flags & O_ACCMODE) != O_RDONLY;
        found.push_back(std::move(file));
    }
    std::ranges::sort(found, {}, &OpenFile::descriptor);
    return found;
}

} // namespace kqu::run

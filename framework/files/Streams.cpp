#include "framework/files/Streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace kqu {

namespace {
constexpr mode_t newFileMode = 0644;
constexpr std::size_t readPiece = 64 * 1024;
} // namespace

Ref<FileStream> FileStream::Open(const std::filesystem::path& path, Access access) {
    int flags = O_RDONLY;
    if (access == Access::CreateNew) {
        ::unlink(path.c_str());
        flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    }
    // A pipe without a writer must not hold the program.
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, newFileMode);
    if (descriptor < 0)
        return nullptr;
    auto stream = std::make_shared<FileStream>(descriptor);
    struct stat status = {};
    const bool isFile = ::fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode);
    return isFile ? stream : nullptr;
}

FileStream::~FileStream() {
    Close();
}

std::string FileStream::ReadAll(std::size_t limit) {
    std::string bytes;
    while (bytes.size() <= limit) {
        const std::size_t done = bytes.size();
        bytes.resize(done + std::min(readPiece, limit + 1 - done));
        const ssize_t got = ::read(descriptor_, bytes.data() + done, bytes.size() - done);
        bytes.resize(done + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return bytes;
    }
    return {};
}

void FileStream::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        // A full disk is no reason to end beside a job that runs on it.
        if (written <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void FileStream::Close() {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0)
        ::close(descriptor);
}

} // namespace kqu

#include "framework/files/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace kqu {

namespace {
constexpr mode_t newFileMode = 0644;
constexpr std::size_t readPiece = 64 * 1024;
} // namespace

FileDescriptor::FileDescriptor(const std::filesystem::path& path, Access access) {
    int flags = O_RDONLY;
    if (access == Access::CreateNew) {
        ::unlink(path.c_str());
        flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    }
    // A pipe without a writer must not hold the program.
    descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, newFileMode);
    struct stat status = {};
    if (descriptor_ >= 0 && (::fstat(descriptor_, &status) != 0 || S_ISDIR(status.st_mode)))
        Close();
}

FileDescriptor::~FileDescriptor() {
    Close();
}

std::size_t FileDescriptor::Length() const {
    struct stat status = {};
    if (::fstat(descriptor_, &status) != 0 || status.st_size < 0)
        return 0;
    return static_cast<std::size_t>(status.st_size);
}

std::string FileDescriptor::Read(std::size_t count) {
    // In pieces: a length that a file only claims costs no memory.
    std::string bytes;
    while (bytes.size() < count) {
        const std::size_t done = bytes.size();
        bytes.resize(done + std::min(readPiece, count - done));
        const ssize_t got = ::read(descriptor_, bytes.data() + done, bytes.size() - done);
        bytes.resize(done + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
    }
    return bytes;
}

std::string FileDescriptor::ReadAll(std::size_t limit) {
    std::string bytes = Read(limit + 1);
    return bytes.size() > limit ? std::string() : bytes;
}

void FileDescriptor::Write(std::string_view bytes) {
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

void FileDescriptor::Close() {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0)
        ::close(descriptor);
}

} // namespace kqu

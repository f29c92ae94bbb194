#include "post/kqu-run/TreeSize.h"

#include <fts.h>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace kqu::run {

namespace {
constexpr int lowest = 19;
/// Two arguments of the system call ioprio_set: "one thread", and the idle class. They are defined
/// here because <linux/ioprio.h> has a parameter with the name "class" in some versions, which is
/// not C++.
constexpr int ofThread = 1;
constexpr int idleClass = 3 << 13;

/// Processor and disk first to everybody else.
void MakeWay() {
    const auto self = static_cast<id_t>(syscall(SYS_gettid));
    setpriority(PRIO_PROCESS, self, lowest);
    syscall(SYS_ioprio_set, ofThread, 0, idleClass);
}

std::uint64_t Size(std::vector<std::string>& paths, bool staysOnVolume) {
    std::vector<char*> roots;
    roots.reserve(paths.size() + 1);
    for (std::string& path : paths)
        roots.push_back(path.data());
    roots.push_back(nullptr);
    FTS* walk = fts_open(roots.data(), FTS_PHYSICAL | FTS_NOCHDIR | (staysOnVolume ? FTS_XDEV : 0),
                         nullptr);
    std::set<std::pair<dev_t, ino_t>> linked;
    std::uint64_t bytes = 0;
    for (FTSENT* entry = nullptr; walk != nullptr && (entry = fts_read(walk)) != nullptr;) {
        if (entry->fts_info != FTS_F)
            continue;
        const struct stat& status = *entry->fts_statp;
        if (S_ISREG(status.st_mode) &&
            (status.st_nlink == 1 || linked.emplace(status.st_dev, status.st_ino).second))
            bytes += static_cast<std::uint64_t>(status.st_size);
    }
    if (walk != nullptr)
        fts_close(walk);
    return bytes;
}
} // namespace

TreeSize::TreeSize(std::vector<std::string> paths, bool staysOnVolume)
    : sum_(std::make_shared<Sum>()) {
    try {
        std::thread([sum = sum_, roots = std::move(paths), staysOnVolume]() mutable {
            MakeWay();
            sum->bytes = Size(roots, staysOnVolume);
            sum->isWhole = true;
        }).detach();
    } catch (const std::system_error&) {
        // No more threads may be made: the size stays unknown, and the tool runs all the same.
        return;
    }
}

std::optional<std::uint64_t> TreeSize::Bytes() const {
    return sum_->isWhole ? std::optional(sum_->bytes.load()) : std::nullopt;
}

} // namespace kqu::run

#include "post/kqu-run/TreeSize.h"

#include <ftw.h>
#include <sched.h>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

namespace kqu::run {

namespace {
/// Processor and disk first to everybody else: the kernel derives the disk's class from this one.
void MakeWay() {
    const sched_param none{};
    sched_setscheduler(0, SCHED_IDLE, &none);
}

/// The walk hands nothing of its caller's over to the function that it calls for each file.
thread_local std::set<std::pair<dev_t, ino_t>> linked;
thread_local double sum = 0;

int Add(const char* /*path*/, const struct stat* status, int kind, struct FTW* /*place*/) {
    if (kind == FTW_F && S_ISREG(status->st_mode) &&
        (status->st_nlink == 1 || linked.emplace(status->st_dev, status->st_ino).second))
        sum += static_cast<double>(status->st_size);
    return 0;
}

} // namespace

std::shared_ptr<const std::atomic<double>> SizeOfTrees(std::vector<std::string> paths,
                                                       bool staysOnVolume) {
    auto size = std::make_shared<std::atomic<double>>(0);
    try {
        std::thread([size, roots = std::move(paths), staysOnVolume] {
            MakeWay();
            // Folders are read piece by piece, so that the walk takes no memory for their files.
            const int flags = FTW_PHYS | (staysOnVolume ? FTW_MOUNT : 0);
            for (const std::string& root : roots)
                if (nftw(root.c_str(), Add, 32, flags) != 0)
                    return; // a part would be taken for the whole
            *size = sum;
        }).detach();
    } catch (const std::system_error&) {
        // No more threads may be made: the size stays unknown, and the tool runs all the same.
    }
    return size;
}

} // namespace kqu::run

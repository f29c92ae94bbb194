#include "post/kqu-run/tools/Tool.h"

#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"

#include <algorithm>
#include <cmath>

namespace kqu::run {

void Tool::Look(pid_t process, bool isRead) {
    const auto moved = work_.isKnown ? AmountsOf(process) : std::nullopt;
    if (!work_.isKnown && !isRead)
        activity_.Look(process, progress_);
    if (!moved)
        return;
    isMeasured_ = true;
    const double done = (work_.isRead ? moved->read : 0) + (work_.isWritten ? moved->written : 0);
    const double size = WorkSize();
    if (work_.passes > 1) {
        progress_.file.clear();
        progress_.share = Share(done, size * work_.passes);
        const double pass = std::floor(progress_.share.value_or(0) * work_.passes) + 1;
        progress_.text = "pass " + std::to_string(std::lround(std::min(pass, work_.passes))) +
                         " of " + std::to_string(std::lround(work_.passes));
    } else {
        Report(done, size);
    }
}

double Tool::WorkSize() {
    if (!work_.trees.empty() && !treeSize_)
        treeSize_ = SizeOfTrees(work_.trees, work_.staysOnVolume);
    return treeSize_ ? treeSize_->load() : work_.bytes;
}

void Tool::Report(double done, double whole) {
    progress_.done = whole > 0 ? std::min(done, whole) : done;
    if (whole <= 0)
        return;
    progress_.whole = whole;
    progress_.share = Share(done, whole);
}

void Tool::NameDisk(const std::string& path) {
    if (const auto disk = VolumeOfDisk(path)) {
        row_.volume = disk->Shown();
        row_.disk = disk->disk;
    }
}

void Tool::NameSources(const std::vector<std::string>& paths) {
    row_.volume = FolderNames(paths);
    const std::string first = paths.empty() ? "." : paths.front();
    if (const auto volume = IsElsewhere(first) ? std::nullopt : VolumeOfFile(first))
        row_.disk = volume->disk;
}

} // namespace kqu::run

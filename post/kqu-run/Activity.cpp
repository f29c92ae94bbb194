#include "post/kqu-run/Activity.h"

#include "post/kqu-run/Volumes.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace kqu::run {

namespace {
/// Smaller files are done between two looks, or are scripts that a shell reads.
constexpr std::uint64_t smallest = 1 << 20;
} // namespace

void Activity::Look(pid_t root, Progress& progress) {
    reader_ = 0;
    input_ = {};
    for (const pid_t process : Family(root))
        for (const OpenFile& file : OpenFilesOf(process)) {
            if (file.isWritten)
                written_.insert(file.identity);
            else if (file.size >= smallest)
                Follow(process, file);
        }
    if (reader_ != 0)
        Report(progress);
}

void Activity::Follow(pid_t process, const OpenFile& file) {
    const auto [found, isNew] = readings_.try_emplace({process, file.descriptor, file.identity},
                                                      Reading{file.position, file.position});
    Reading& reading = found->second;
    reading.isOrdered = reading.isOrdered && file.position >= reading.last;
    reading.last = file.position;
    // One that was opened before the first look may have been read to its end already.
    const bool isRead = !isNew && file.position > reading.first;
    if (isRead && reading.isOrdered && file.size > input_.size) {
        reader_ = process;
        input_ = file;
    }
}

const std::vector<Activity::Operand>& Activity::OperandsOf(pid_t process) {
    const auto [found, isNew] = operands_.try_emplace(process);
    if (!isNew)
        return found->second;
    const std::filesystem::path folder = WorkingFolderOf(process);
    const std::vector<std::string> arguments = ArgumentsOf(process);
    // The first one is the program itself.
    for (std::size_t number = 1; number < arguments.size(); ++number) {
        const std::string path = folder / arguments[number];
        struct stat status {};
        if (stat(path.c_str(), &status) == 0)
            found->second.push_back({{status.st_dev, status.st_ino},
                                     SizeOf(path).value_or(0),
                                     S_ISDIR(status.st_mode)});
    }
    return found->second;
}

void Activity::Report(Progress& progress) {
    std::uint64_t before = 0, whole = 0;
    bool isOperand = false, isBelowOne = false;
    for (const Operand& operand : OperandsOf(reader_)) {
        if (written_.contains(operand.identity))
            continue;
        isOperand = isOperand || operand.identity == input_.identity;
        isBelowOne = isBelowOne || operand.isFolder;
        before += isOperand ? 0 : operand.size;
        whole += operand.size;
    }
    progress.file = input_.path;
    // One of many files in a folder, of which nobody knows how many are read.
    if (!isOperand && isBelowOne)
        return;
    if (!isOperand) {
        before = 0;
        whole = input_.size;
    }
    const std::pair<pid_t, Identity> subject{reader_, isOperand ? Identity{} : input_.identity};
    if (reported_.first != 0 && subject != reported_)
        ++progress.phase;
    reported_ = subject;
    progress.done = static_cast<double>(before + input_.position);
    progress.whole = static_cast<double>(std::max(whole, before + input_.position));
    progress.share = *progress.done / *progress.whole;
}

} // namespace kqu::run

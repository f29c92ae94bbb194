#pragma once

#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Row.h"

#include <map>
#include <set>
#include <tuple>

namespace kqu::run {

/// How far any command is, by what the kernel reports about it and its children: the positions in
/// the files that they read from the beginning to the end. A file in which the position has ever
/// gone back is read in another order, and says nothing. Where the file is one of several operands,
/// those before it count as done; where it is one of those in a folder, it has no share.
class Activity {
  public:
    /// Looks once more, and updates share, amounts, phase and the file in work. Leaves them alone
    /// where nothing is known.
    void Look(pid_t root, Progress& progress);

  private:
    using Identity = std::pair<dev_t, ino_t>;
    struct Reading {
        std::uint64_t first = 0, last = 0;
        bool isOrdered = true;
    };
    struct Operand {
        Identity identity;
        std::uint64_t size = 0;
        bool isFolder = false;
    };
    void Follow(pid_t process, const OpenFile& file);
    [[nodiscard]] const std::vector<Operand>& OperandsOf(pid_t process);
    void Report(Progress& progress);

    std::map<std::tuple<pid_t, int, Identity>, Reading> readings_;
    std::map<pid_t, std::vector<Operand>> operands_;
    std::set<Identity> written_;
    /// The largest file that is read in order at this look.
    pid_t reader_ = 0;
    OpenFile input_;
    /// What the reported share belongs to: all operands of a process, or one file.
    std::pair<pid_t, Identity> reported_;
};

} // namespace kqu::run

#pragma once

#include "post/kqu-run/Launch.h"
#include "post/kqu-run/Row.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <sys/types.h>

namespace kqu::run {

/// What is known of a tool: its row, and how to tell how far it is.
class Tool {
  public:
    Tool() = default;
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;
    virtual ~Tool() = default;

    /// Fills the row, and chooses what is read; may ask the tool for its progress by an option that
    /// doesn't change what the tool does. Before the start.
    virtual void Prepare(Launch& launch) = 0;
    /// A line of the stream or the channel that is read; the last may lack its end.
    virtual void Read(std::string_view /*line*/) {}
    /// Looks at the running process, four times a second.
    virtual void Look(pid_t /*process*/) {}

    [[nodiscard]] const Row& GetRow() const { return row_; }
    [[nodiscard]] const Progress& GetProgress() const { return progress_; }

  protected:
    Row row_;
    Progress progress_;
};

[[nodiscard]] std::unique_ptr<Tool> MakeRsync();
[[nodiscard]] std::unique_ptr<Tool> MakeDd();
[[nodiscard]] std::unique_ptr<Tool> MakeBadblocks();
[[nodiscard]] std::unique_ptr<Tool> MakeE2fsck();
[[nodiscard]] std::unique_ptr<Tool> MakeE4defrag();
[[nodiscard]] std::unique_ptr<Tool> MakeTar();
[[nodiscard]] std::unique_ptr<Tool> MakeRestic();
[[nodiscard]] std::unique_ptr<Tool> MakeBorg();
/// Any other command; `program` is where among the arguments its name is.
[[nodiscard]] std::unique_ptr<Tool> MakeCommand(std::size_t program);

} // namespace kqu::run

#pragma once

#include "post/kqu-run/Activity.h"
#include "post/kqu-run/Launch.h"
#include "post/kqu-run/Row.h"
#include "post/kqu-run/TreeSize.h"
#include "post/posting/Text.h"

#include <memory>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kqu::run {

using post::Pattern;

/// What is known of a tool: its row, and how to find out how far it is. Without words of its own it
/// is as far as the kernel reports: by the bytes that it has moved where `work_` says how many they
/// will be, else by the files that it reads.
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
    /// Looks at the running process, four times a second. `isRead`: its own words are read.
    virtual void Look(pid_t process, bool isRead);

    [[nodiscard]] const Row& GetRow() const { return row_; }
    [[nodiscard]] const Progress& GetProgress() const { return progress_; }

  protected:
    /// Bytes that pass through the tool from its beginning to its end.
    struct Work {
        bool isKnown = false;
        bool isRead = true, isWritten = false;
        /// Of one pass; 0 if it has no known end. Or the folders whose files they are.
        double bytes = 0;
        std::vector<std::string> trees;
        bool staysOnVolume = false;
        double passes = 1;
    };
    /// Names the row after a disk or an image of one.
    void NameDisk(const std::string& path);
    /// Names the row after files and folders.
    void NameSources(const std::vector<std::string>& paths);
    /// How many bytes a pass has; 0 as long as the folders are being added up.
    double WorkSize();
    void Report(double done, double whole);

    Row row_;
    Progress progress_;
    Work work_;
    /// Whether the kernel reports how much of the work is done.
    bool isMeasured_ = false;

  private:
    Activity activity_;
    std::shared_ptr<const std::atomic<double>> treeSize_;
};

/// Finds the tool in the command, behind commands such as sudo, nice and env, and notes in `launch`
/// where it is. A command that isn't known is a tool as well, one that tells nothing.
[[nodiscard]] std::unique_ptr<Tool> Recognise(Launch& launch);

/// The tool's name without its folder.
[[nodiscard]] std::string ToolName(const Launch& launch);

[[nodiscard]] std::unique_ptr<Tool> MakeRsync();
[[nodiscard]] std::unique_ptr<Tool> MakeDd();
[[nodiscard]] std::unique_ptr<Tool> MakeBadblocks();
[[nodiscard]] std::unique_ptr<Tool> MakeE2fsck();
[[nodiscard]] std::unique_ptr<Tool> MakeE4defrag();
[[nodiscard]] std::unique_ptr<Tool> MakeTar();
[[nodiscard]] std::unique_ptr<Tool> MakeRestic();
[[nodiscard]] std::unique_ptr<Tool> MakeBorg();
/// Any other command.
[[nodiscard]] std::unique_ptr<Tool> MakeCommand();

} // namespace kqu::run

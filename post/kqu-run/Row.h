#pragma once

#include "post/kqu-run/Naming.h"
#include "post/posting/Tools.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kqu::run {

/// What stays the same in the row of one run. Texts may hold any bytes; an empty one is not known.
struct Row {
    /// Decides what the row looks like.
    const post::Tool* tool = post::FindTool("backup");
    Name volume;
    Name destination;
    /// The kernel's name of the disk, such as "sda1".
    std::string disk;
    /// A backup of folders, not of a whole volume.
    bool folder = false;
    /// A backup into an image file.
    bool image = false;
    /// A scan of the volume's sectors, where that can be told.
    bool sectors = false;
    /// The files on the defragmenter's volume, by which the panel divides.
    std::uint64_t filesInUse = 0;
    /// Whether names of files and paths are posted; on the system bus every user can read them.
    bool showsFiles = true;

    /// A name as everybody who can read the row may see it.
    [[nodiscard]] const std::string& Shown(const Name& name) const {
        return showsFiles ? name.full : name.open;
    }
};

/// How far a tool is.
struct Progress {
    /// From 0 to 1; nothing where the tool doesn't tell.
    std::optional<double> share;
    /// What is being done, as one line without names of files.
    std::string text;
    /// The file in work; may be empty.
    std::string file;
    /// How far the file in work is, from 0 to 1.
    std::optional<double> fileShare;
    /// How much is done, and of how much, in bytes; nothing where that isn't known.
    std::optional<double> done, whole;
    /// Counts up where the share begins at 0 again.
    int phase = 0;
    /// A defragmenter that only looks.
    bool checking = false;

    friend bool operator==(const Progress&, const Progress&) = default;
};

} // namespace kqu::run

#pragma once

#include "tests/support/MadeUpTree.h"

namespace kqu::simulation {

/// A made-up machine with mounted volumes: its table of mounts, its devices and their labels.
class MadeUpVolumes : public MadeUpTree {
  public:
    /// Mounts a device of that number ("8:1") and kernel's name at a place, which is made as well.
    void Mount(const std::string& number, const std::string& disk, const std::string& place) {
        const std::string link = "sys/dev/block/" + number;
        if (!std::filesystem::is_symlink(Root() / link))
            Link(link, "../../devices/pci0000:00/block/" + disk);
        Write("sys/class/block/" + disk + "/dev", number + "\n");
        std::string escaped;
        for (const char c : place)
            escaped += c == ' ' ? "\\040" : std::string(1, c);
        std::filesystem::create_directories(Root() / place.substr(1));
        MountLine("36 35 " + number + " / " + escaped + " rw shared:1 - ext4 /dev/" + disk + " rw");
    }
    /// Any further line of the table.
    void MountLine(const std::string& line) { Write("proc/self/mountinfo", table_ += line + "\n"); }
    void UnmountAll() { Write("proc/self/mountinfo", table_ = ""); }
    /// What udev makes of a label, already escaped.
    void Label(const std::string& disk, const std::string& label) const {
        Link("dev/disk/by-label/" + label, "../../" + disk);
    }

  private:
    std::string table_;
};

} // namespace kqu::simulation

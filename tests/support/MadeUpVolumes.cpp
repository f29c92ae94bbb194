#include "tests/support/MadeUpVolumes.h"

namespace kqu::simulation {

void MadeUpVolumes::Mount(const std::string& number, const std::string& disk,
                          const std::string& place) {
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

void MadeUpVolumes::MountLine(const std::string& line) {
    table_ += line + "\n";
    Write("proc/self/mountinfo", table_);
}

void MadeUpVolumes::UnmountAll() {
    table_.clear();
    Write("proc/self/mountinfo", table_);
}

void MadeUpVolumes::Label(const std::string& disk, const std::string& label) const {
    Link("dev/disk/by-label/" + label, "../../" + disk);
}

} // namespace kqu::simulation

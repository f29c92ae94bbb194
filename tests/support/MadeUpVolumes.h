#pragma once

#include "tests/support/MadeUpTree.h"

#include <string>

namespace kqu::simulation {

/// A made-up machine with mounted volumes: its table of mounts, its devices and their labels.
class MadeUpVolumes : public MadeUpTree {
  public:
    /// Mounts a device of that number ("8:1") and kernel's name at a place, which is made as well.
    void Mount(const std::string& number, const std::string& disk, const std::string& place);
    /// Any further line of the table.
    void MountLine(const std::string& line);
    void UnmountAll();
    /// What udev makes of a label, already escaped.
    void Label(const std::string& disk, const std::string& label) const;

  private:
    std::string table_;
};

} // namespace kqu::simulation

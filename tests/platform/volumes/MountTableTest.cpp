#include "platform/volumes/MountTable.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

TEST(MountTableTest, ALineIsReadByItsForm) {
    struct Case {
        const char* line;
        std::vector<Mount> mounts;
    };
    const std::vector<Case> cases{
        {"36 35 98:0 /root /mnt rw,noatime master:1 - ext3 /dev/sda1 rw,errors=continue\n",
         {{"98:0", "/mnt", "/dev/sda1"}}},
        // None, or many, of the optional fields.
        {"36 35 98:0 / / rw - ext4 /dev/sda1 rw", {{"98:0", "/", "/dev/sda1"}}},
        {"36 35 98:0 / / rw shared:1 master:2 propagate_from:3 unbindable - ext4 /dev/sda1 rw",
         {{"98:0", "/", "/dev/sda1"}}},
        // A dash ends them only where it stands alone.
        {"36 35 98:0 / - rw shared:- - ext4 /dev/sda1 rw", {{"98:0", "-", "/dev/sda1"}}},
        {R"(36 35 8:1 / /media/My\040Disk\011\134x\012 rw - vfat /dev/disk\0401 rw)",
         {{"8:1", "/media/My Disk\t\\x\n", "/dev/disk 1"}}},
        {R"(36 35 8:1 / /a\04 rw - vfat /dev/\400\9 rw)", {{"8:1", "/a\\04", "/dev/\\400\\9"}}},
        {R"(36 35 8:1 / /\303\204 rw - vfat x rw)", {{"8:1", "/Ä", "x"}}},
        // Too short to be a mount.
        {"", {}},
        {"\n\n", {}},
        {"36 35 98:0 / /mnt rw", {}},
        {"36 35 98:0 / /mnt rw shared:1 ext3 /dev/sda1 rw", {}},
        {"36 35 98:0 / /mnt rw - ext3", {}},
        {"1 2 8:1 / /a rw - x /dev/a rw\nbroken\n3 4 8:2 / /b rw - x /dev/b rw\n",
         {{"8:1", "/a", "/dev/a"}, {"8:2", "/b", "/dev/b"}}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(ParseMountTable(c.line), c.mounts) << c.line;
}

} // namespace
} // namespace kqu::platform

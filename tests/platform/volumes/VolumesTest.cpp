#include "platform/volumes/Volumes.h"

#include "tests/support/MadeUpVolumes.h"

#include <array>
#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

struct VolumesTest : testing::Test {
    simulation::MadeUpVolumes tree;
    Volumes volumes{tree.Root()};
};

TEST_F(VolumesTest, OnlyBlockDevicesCountAndEachOnlyOnce) {
    EXPECT_TRUE(volumes.Mounted().empty());
    tree.MountLine("22 27 0:21 / /proc rw - proc proc rw");
    tree.MountLine("broken");
    tree.Mount("254:1", "dm-0", "/");
    tree.MountLine("30 27 0:26 / /home/me/server rw - nfs4 server:/export rw");
    tree.MountLine("31 27 0:27 / /home/me/phone rw - fuse.gvfsd /dev/fuse rw");
    tree.Mount("8:1", "sda1", "/media/My Disk");
    tree.Mount("8:1", "sda1", "/again/elsewhere");
    // A file system with its device, but without that device's number; by two of its names.
    tree.Write("sys/class/block/dm-7/dev", "254:7\n");
    tree.Link("dev/mapper/vault", "../dm-7");
    tree.MountLine("40 27 0:40 /@ /vault rw - btrfs /dev/mapper/vault rw,subvol=/@");
    tree.MountLine("41 27 0:40 /@home /vault/home rw - btrfs /dev/dm-7 rw,subvol=/@home");
    std::string all;
    for (const Volume& volume : volumes.Mounted())
        all += volume.disk + " " + volume.mountPoint + ", ";
    EXPECT_EQ(all, "dm-0 /, sda1 /media/My Disk, dm-7 /vault, ");
}

TEST_F(VolumesTest, AVolumeKeepsItsNumberForAsLongAsItIsMounted) {
    tree.Mount("8:17", "sdb1", "/early");
    tree.Mount("8:1", "sda1", "/");
    const auto early = volumes.Mounted().at(0);
    EXPECT_EQ(volumes.Mounted().at(1).reference, bootVolume);
    EXPECT_TRUE(early.reference != bootVolume && early.reference != 0);
    EXPECT_EQ(volumes.Find(early.reference), early);
    tree.Mount("8:33", "sdc1", "/late");
    EXPECT_EQ(volumes.Mounted().at(0), early);
    const auto late = volumes.Mounted().at(2);

    tree.UnmountAll();
    tree.Mount("8:33", "sdc1", "/late");
    EXPECT_EQ(volumes.Mounted(), std::vector{late});
    // The tree of files is still there, on whatever it is.
    EXPECT_EQ(volumes.Find(bootVolume), (Volume{bootVolume, "", "/"}));
    // What comes back is another volume.
    tree.Mount("8:17", "sdb1", "/early");
    for (const std::int32_t none : {early.reference, 0, 1, -1})
        EXPECT_EQ(volumes.Find(none), std::nullopt);
}

TEST_F(VolumesTest, TheNameIsTheLabelElseThePlace) {
    const std::array<std::string, 4> cases[] = {
        {"a", "", "/", "/"},
        {"b", "", "/media/My Disk", "My Disk"},
        {"c", R"(My\x20Disk\x2f\x5cx20)", "/c", R"(My Disk/\x20)"},
        {"e", R"(odd\xzz)", "/e", R"(odd\xzz)"}};
    for (const auto& [disk, label, place, name] : cases) {
        tree.Mount("8:" + std::to_string(disk[0]), disk, place);
        if (!label.empty())
            tree.Label(disk, label);
        EXPECT_EQ(volumes.NameOf(volumes.Mounted().back()), name);
    }
}

} // namespace
} // namespace kqu::platform

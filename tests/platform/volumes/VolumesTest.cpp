#include "platform/volumes/Volumes.h"

#include "tests/support/MadeUpVolumes.h"

#include <gtest/gtest.h>

namespace kqu::platform {
namespace {

using simulation::MadeUpVolumes;

std::vector<std::string> DisksAndPlaces(Volumes& volumes) {
    std::vector<std::string> all;
    for (const Volume& volume : volumes.Mounted())
        all.push_back(volume.disk + " " + volume.mountPoint);
    return all;
}

TEST(VolumesTest, OnlyBlockDevicesCountAndEachOnlyOnce) {
    MadeUpVolumes tree;
    Volumes volumes(tree.Root());
    EXPECT_TRUE(volumes.Mounted().empty());

    tree.MountLine("22 27 0:21 / /proc rw - proc proc rw");
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
    tree.Write("sys/class/block/sdc1/dev", "8:33\n");
    tree.MountLine("42 27 0:41 / /plain rw - btrfs /dev/sdc1 rw");
    EXPECT_EQ(DisksAndPlaces(volumes), (std::vector<std::string>{"dm-0 /", "sda1 /media/My Disk",
                                                                 "dm-7 /vault", "sdc1 /plain"}));
}

TEST(VolumesTest, AVolumeKeepsItsNumberForAsLongAsItIsMounted) {
    MadeUpVolumes tree;
    Volumes volumes(tree.Root());
    tree.Mount("8:17", "sdb1", "/early");
    tree.Mount("8:1", "sda1", "/");
    const auto early = volumes.Mounted().at(0);
    EXPECT_EQ(volumes.Mounted().at(1).reference, bootVolume);
    EXPECT_NE(early.reference, bootVolume);
    EXPECT_NE(early.reference, 0);
    EXPECT_EQ(volumes.Find(early.reference), early);

    tree.Mount("8:33", "sdc1", "/late");
    EXPECT_EQ(volumes.Mounted().at(0), early);
    const auto late = volumes.Mounted().at(2);

    tree.UnmountAll();
    tree.Mount("8:33", "sdc1", "/late");
    EXPECT_EQ(volumes.Mounted(), std::vector{late});
    EXPECT_EQ(volumes.Find(early.reference), std::nullopt);
    // The tree of files is still there, on whatever it is.
    EXPECT_EQ(volumes.Find(bootVolume), (Volume{bootVolume, "", "/"}));

    // What comes back is another volume.
    tree.Mount("8:17", "sdb1", "/early");
    EXPECT_EQ(volumes.Find(early.reference), std::nullopt);
    for (const std::int32_t none : {0, 1, -1})
        EXPECT_EQ(volumes.Find(none), std::nullopt);
}

TEST(VolumesTest, TheNameIsTheLabelElseThePlace) {
    struct Case {
        const char* label;
        const char* place;
        const char* name;
    };
    for (const Case& c : {Case{"", "/", "/"},
                          {"", "/media/My Disk", "My Disk"},
                          {R"(My\x20Disk\x2f\x5cx20)", "/", R"(My Disk/\x20)"},
                          {R"(Ä\x2)", "/mnt", R"(Ä\x2)"},
                          {R"(odd\xzz)", "/mnt", R"(odd\xzz)"}}) {
        MadeUpVolumes tree;
        tree.Mount("8:1", "sda1", c.place);
        tree.Label("sda2", "Other");
        if (*c.label != '\0')
            tree.Label("sda1", c.label);
        Volumes volumes(tree.Root());
        EXPECT_EQ(volumes.NameOf(volumes.Mounted().at(0)), c.name) << c.place;
    }
}

TEST(VolumesTest, FilesAreTheInodesInUse) {
    struct Case {
        fsfilcnt_t inodes;
        fsfilcnt_t free;
        std::uint32_t files;
    };
    for (const Case& c : std::vector<Case>{
             {1000, 400, 600}, {0, 0, 0}, {5, 6, 0}, {~fsfilcnt_t{0}, 1, 4294967295}}) {
        struct statvfs status {};
        status.f_files = c.inodes;
        status.f_ffree = c.free;
        EXPECT_EQ(FilesInUse(status), c.files) << c.inodes << " " << c.free;
    }
}

} // namespace
} // namespace kqu::platform

#include "bridges/VolumeBridges.h"

#include "framework/files/Volumes.h"
#include "platform/functions/Functions.h"
#include "tests/support/MachineWithVolumes.h"

#include <gtest/gtest.h>

#include <string>

namespace kqu {
namespace {

using namespace simulation;

class VolumeBridgesTest : public testing::Test {
  protected:
    Ref<MemoryBlock> BlockOf(std::int32_t handle) {
        auto block = std::make_shared<MemoryBlock>(4);
        block->SetInt32Value(0, handle);
        return block;
    }
    Ref<Dictionary> RowOfDefragmenter(const std::string& name, const std::string& disk) {
        machine.centre.Post(name, "KQDefrag", {{"BSD", disk.c_str()}, {"NumFilesExamined", "1"}});
        machine.Advance();
        return machine.Row(name);
    }

    MachineWithVolumes machine;
};

TEST_F(VolumeBridgesTest, ATextComesWholeOrNotAtAllAndIsReleasedOnlyThen) {
    for (const bool release : {true, false})
        for (const std::size_t length : {4U, 1023U, 1024U}) {
            const std::string text(length, 'x');
            const bool comes = length < 1024;
            const auto handle = machine.handles.AddText(text);
            EXPECT_EQ(CFStrRefToStr(BlockOf(handle), release), comes ? text : "") << length;
            EXPECT_EQ(machine.handles.Text(handle) == nullptr, comes && release) << length;
        }
    for (const std::int32_t none : {0, -1, 4711})
        EXPECT_EQ(CFStrRefToStr(BlockOf(none), true), "");
}

TEST_F(VolumeBridgesTest, TheDiskOfAVolumeIsNamedAndTheTextReleased) {
    std::int32_t copied = 0;
    const auto copy = *machine.functions.Find<functions::FSCopyDiskIDForVolume>();
    machine.functions.Set<functions::FSCopyDiskIDForVolume>(
        [&](std::int32_t volume, std::int32_t* text) {
            const auto status = copy(volume, text);
            copied = *text;
            return status;
        });
    const std::int32_t photos = Volume(1)->MacVRefNum();
    EXPECT_EQ(GetBSDNameForVRef(photos, true), "sdb1");
    EXPECT_EQ(machine.handles.Text(copied), nullptr);
    EXPECT_EQ(GetBSDNameForVRef(photos, false), "sdb1");
    EXPECT_NE(machine.handles.Text(copied), nullptr);
    EXPECT_EQ(GetBSDNameForVRef(4711, true), "");
}

TEST_F(VolumeBridgesTest, VolumesAreItemsWithNamesOfTheirOwn) {
    ASSERT_EQ(VolumeCount(), 2);
    const Ref<FolderItem> photos = Volume(1);
    EXPECT_EQ(photos->Name(), "Photos");
    EXPECT_EQ(photos->MacDirID(), 1);
    EXPECT_NE(photos->MacVRefNum(), Volume(0)->MacVRefNum());
    EXPECT_EQ(photos->Parent(), nullptr);
    // What lies below is known by its path, from the one root of all paths on.
    EXPECT_EQ(photos->Child("x")->MacVRefNum(), Volume(0)->MacVRefNum());
    EXPECT_EQ(Volume(-1), nullptr);
    // It may have gone since it was counted.
    machine.tree.UnmountAll();
    EXPECT_EQ(Volume(1), nullptr);
    machine.functions.Remove<functions::MountedVolumes>();
    EXPECT_EQ(VolumeCount(), 0);
}

TEST_F(VolumeBridgesTest, ADefragmenterThatIsNotInTheLookupFileIsFoundAmongTheVolumes) {
    machine.functions.Set<functions::FSGetVolumeInfo>(
        [](std::int32_t, std::uint32_t index, std::int32_t* actual, std::uint32_t which,
           std::byte* info, std::u16string* name, std::byte* root) {
            EXPECT_TRUE(index == 0 && actual == nullptr && name == nullptr && root == nullptr);
            EXPECT_EQ(which, 0xFFFFU);
            info[32] = std::byte{8};
            return 0;
        });
    machine.Start();
    const auto row = RowOfDefragmenter("KQS_disk.1", "SDB1");
    EXPECT_EQ(row->Value("volume").StringValue(), "Photos");
    EXPECT_EQ(row->Value("TotalFiles").UInt32Value(), 8U);
    EXPECT_EQ(row->Value("progress").DoubleValue(), 125);

    // An error counts as no files at all.
    machine.functions.Set<functions::FSGetVolumeInfo>([](auto...) { return -36; });
    EXPECT_EQ(RowOfDefragmenter("KQS_disk.2", "sda1")->Value("TotalFiles").UInt32Value(), 0U);

    const auto unknown = RowOfDefragmenter("KQS_disk.3", "sdz9");
    EXPECT_EQ(unknown->Value("volume").StringValue(), "sdz9");
    EXPECT_FALSE(unknown->HasKey("TotalFiles"));
    // A volume whose disk can't be told has the name of a disk that was not named.
    machine.functions.Set<functions::FSCopyDiskIDForVolume>(
        [](std::int32_t, std::int32_t*) { return -35; });
    EXPECT_EQ(RowOfDefragmenter("KQS_disk.4", "")->Value("volume").StringValue(), "/");
    EXPECT_FALSE(machine.HasEnded());
    machine.functions.Remove<functions::FSGetVolumeInfo>();
    static_cast<void>(RowOfDefragmenter("KQS_disk.5", ""));
    EXPECT_TRUE(machine.HasEnded());
}

} // namespace
} // namespace kqu

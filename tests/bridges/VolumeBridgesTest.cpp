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
    for (const bool release : {true, false}) {
        // Handles are numbered as they come.
        const std::int32_t copied = machine.handles.AddText("") + 1;
        EXPECT_EQ(GetBSDNameForVRef(Volume(1)->MacVRefNum(), release), "sdb1");
        EXPECT_EQ(machine.handles.Text(copied) == nullptr, release);
    }
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

} // namespace
} // namespace kqu

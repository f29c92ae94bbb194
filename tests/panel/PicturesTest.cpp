#include "panel/Pictures.h"

#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kqu {
namespace {

using namespace simulation;

using Get = Ref<Picture> (*)();

/// Which picture each accessor loads, and which one becomes its mask.
const std::tuple<int, Get, Get> accessors[] = {
    {168, Grow, nullptr},
    {169, ShutdownMask2, nullptr},
    {170, SleepMask2, nullptr},
    {171, SmallProgress, nullptr},
    {172, SmallProgressMask, nullptr},
    {173, DefragToolBar, DefragToolBar_m},
    {175, NewDefragToolBar_f, NewDefragToolBar_m},
    {177, BackupToolBar_f, BackupToolBar_m},
    {179, FolderBackupToolBar_f, FolderBackupToolBar_m},
    {181, MPR_ScheduleFolderBackup_f, MPR_ScheduleFolderBackup_m},
    {183, MPR_ScheduleBackup_f, MPR_ScheduleBackup_m},
    {185, MPR_ScheduleScanner_f, MPR_ScheduleScanner_m},
    {187, MPR_ScheduleDefrag_f, MPR_ScheduleDefrag_m},
};

TEST(Pictures, LoadOnceByTheirIdsWithTheirMasks) {
    Artwork artwork;
    for (const auto& [id, get, partner] : accessors) {
        const int value = id;
        artwork.Set(id, 6, 5, [value](int, int) { return Grey(value); });
        if (partner != nullptr)
            artwork.Set(id + 1, 4, 5, [value](int, int) { return Grey(value - 100); });
        const Ref<Picture> picture = get();
        EXPECT_EQ(picture->Graphics().Pixel(0, 0), Grey(id));
        // Later changes of the file make no difference.
        artwork.Remove(id);
        EXPECT_EQ(get(), picture);
        const Ref<Picture> mask = picture->Mask(MaskCreation::IfThere);
        ASSERT_EQ(mask != nullptr, partner != nullptr) << id;
        if (!mask)
            continue;
        EXPECT_EQ(mask->Graphics().Pixel(3, 4), Grey(id - 100));
        // Where the partner is smaller nothing shows.
        EXPECT_EQ(mask->Graphics().Pixel(4, 0), Grey(255));
        // The partner is drawn once: what happens to the mask later stays.
        mask->Graphics().SetPixel(0, 0, Grey(7));
        EXPECT_EQ(get()->Mask(MaskCreation::IfThere)->Graphics().Pixel(0, 0), Grey(7));
        EXPECT_EQ(partner()->Graphics().Pixel(0, 0), Grey(id - 100));
    }
}

} // namespace
} // namespace kqu

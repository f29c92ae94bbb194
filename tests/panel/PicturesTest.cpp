#include "panel/Pictures.h"

#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

namespace kqu {
namespace {

using namespace simulation;

struct Accessor {
    Ref<Picture> (*get)();
    int id;
    Ref<Picture> (*partner)();
};

const Accessor accessors[] = {
    {Grow, 168, nullptr},
    {ShutdownMask2, 169, nullptr},
    {SleepMask2, 170, nullptr},
    {SmallProgress, 171, nullptr},
    {SmallProgressMask, 172, nullptr},
    {DefragToolBar, 173, DefragToolBar_m},
    {NewDefragToolBar_f, 175, NewDefragToolBar_m},
    {BackupToolBar_f, 177, BackupToolBar_m},
    {FolderBackupToolBar_f, 179, FolderBackupToolBar_m},
    {MPR_ScheduleFolderBackup_f, 181, MPR_ScheduleFolderBackup_m},
    {MPR_ScheduleBackup_f, 183, MPR_ScheduleBackup_m},
    {MPR_ScheduleScanner_f, 185, MPR_ScheduleScanner_m},
    {MPR_ScheduleDefrag_f, 187, MPR_ScheduleDefrag_m},
};

TEST(Pictures, LoadOnceByTheirIdsWithTheirMasks) {
    Artwork artwork;
    for (const auto& [get, id, partner] : accessors) {
        const int value = id;
        artwork.Set(id, 6, 5, [value](int, int) { return Grey(value); });
        if (partner != nullptr)
            artwork.Set(id + 1, 4, 5, [value](int, int) { return Grey(value - 100); });
        const Ref<Picture> picture = get();
        ASSERT_NE(picture, nullptr) << id;
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

TEST(Pictures, AMissingPartnerIsNoFailureAMissingPictureIsNil) {
    Artwork artwork;
    for (const auto& [get, id, partner] : accessors) {
        if (partner != nullptr)
            artwork.Remove(id + 1);
        ASSERT_NE(get(), nullptr) << id;
        EXPECT_EQ(get()->Mask(MaskCreation::IfThere), nullptr) << id;
        DropPictures();
        artwork.Remove(id);
        EXPECT_EQ(get(), nullptr) << id;
    }
}

} // namespace
} // namespace kqu

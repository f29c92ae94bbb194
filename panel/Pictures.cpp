#include "panel/Pictures.h"

#include "framework/ui/ResourceFork.h"

#include <map>
#include <utility>

namespace kqu {

namespace {
/// The pictures that were asked for so far, at the scale that they are of; a missing one is looked
/// for again.
std::map<std::pair<int, int>, Ref<Picture>> loaded;

Ref<Picture> Loaded(int id) {
    Ref<Picture>& picture = loaded[{id, ResourceFork::Scale()}];
    if (!picture)
        picture = appResourceForkGetter()->GetPicture(id);
    return picture;
}

/// The first time, its partner is drawn into the picture's mask; without one it stays unmasked.
Ref<Picture> LoadedWithMask(int id, Ref<Picture> (*partner)()) {
    if (const auto known = loaded.find({id, ResourceFork::Scale()});
        known != loaded.end() && known->second)
        return known->second;
    const Ref<Picture> picture = Loaded(id);
    if (!picture)
        return nullptr;
    if (const Ref<Picture> mask = partner())
        picture->Mask(MaskCreation::MakeIfMissing)->Graphics().DrawPicture(*mask, 0, 0);
    return picture;
}
} // namespace

bool IsOfPresentScale(const Ref<Picture>& kept) {
    return kept && kept->Scale() == ResourceFork::Scale();
}

Ref<Picture> Grow() {
    return Loaded(168);
}

Ref<Picture> ShutdownMask2() {
    return Loaded(169);
}

Ref<Picture> SleepMask2() {
    return Loaded(170);
}

Ref<Picture> SmallProgress() {
    return Loaded(171);
}

Ref<Picture> SmallProgressMask() {
    return Loaded(172);
}

Ref<Picture> DefragToolBar() {
    return LoadedWithMask(173, DefragToolBar_m);
}

Ref<Picture> DefragToolBar_m() {
    return Loaded(174);
}

Ref<Picture> NewDefragToolBar_f() {
    return LoadedWithMask(175, NewDefragToolBar_m);
}

Ref<Picture> NewDefragToolBar_m() {
    return Loaded(176);
}

Ref<Picture> BackupToolBar_f() {
    return LoadedWithMask(177, BackupToolBar_m);
}

Ref<Picture> BackupToolBar_m() {
    return Loaded(178);
}

Ref<Picture> FolderBackupToolBar_f() {
    return LoadedWithMask(179, FolderBackupToolBar_m);
}

Ref<Picture> FolderBackupToolBar_m() {
    return Loaded(180);
}

Ref<Picture> MPR_ScheduleFolderBackup_f() {
    return LoadedWithMask(181, MPR_ScheduleFolderBackup_m);
}

Ref<Picture> MPR_ScheduleFolderBackup_m() {
    return Loaded(182);
}

Ref<Picture> MPR_ScheduleBackup_f() {
    return LoadedWithMask(183, MPR_ScheduleBackup_m);
}

Ref<Picture> MPR_ScheduleBackup_m() {
    return Loaded(184);
}

Ref<Picture> MPR_ScheduleScanner_f() {
    return LoadedWithMask(185, MPR_ScheduleScanner_m);
}

Ref<Picture> MPR_ScheduleScanner_m() {
    return Loaded(186);
}

Ref<Picture> MPR_ScheduleDefrag_f() {
    return LoadedWithMask(187, MPR_ScheduleDefrag_m);
}

Ref<Picture> MPR_ScheduleDefrag_m() {
    return Loaded(188);
}

void DropPictures() {
    loaded.clear();
}

} // namespace kqu

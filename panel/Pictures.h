#pragma once

#include "framework/ui/Picture.h"
#include "framework/values/Object.h"

namespace kqu {

// The artwork of the panel. Each picture is loaded at its first use, together with its mask where
// it has one, and is the same object from then on; nil if it is missing.

/// Whether a picture that is kept has the pixels that the device scale takes by now; else it is to
/// be made anew.
[[nodiscard]] bool IsOfPresentScale(const Ref<Picture>& kept);

/// The stencil of the grip.
Ref<Picture> Grow();

// Stencils of the badges; the first gives the size of both.
Ref<Picture> ShutdownMask2();
Ref<Picture> SleepMask2();

// The sprite of the bars: colours and mask, slices side by side.
Ref<Picture> SmallProgress();
Ref<Picture> SmallProgressMask();

/// The scanner's icon, despite its name.
Ref<Picture> DefragToolBar();
Ref<Picture> DefragToolBar_m();
Ref<Picture> NewDefragToolBar_f();
Ref<Picture> NewDefragToolBar_m();
Ref<Picture> BackupToolBar_f();
Ref<Picture> BackupToolBar_m();
Ref<Picture> FolderBackupToolBar_f();
Ref<Picture> FolderBackupToolBar_m();

// The icons of the sibling product.
Ref<Picture> MPR_ScheduleFolderBackup_f();
Ref<Picture> MPR_ScheduleFolderBackup_m();
Ref<Picture> MPR_ScheduleBackup_f();
Ref<Picture> MPR_ScheduleBackup_m();
Ref<Picture> MPR_ScheduleScanner_f();
Ref<Picture> MPR_ScheduleScanner_m();
Ref<Picture> MPR_ScheduleDefrag_f();
Ref<Picture> MPR_ScheduleDefrag_m();

/// Drops all of them; the next use loads anew.
void DropPictures();

} // namespace kqu

#include "framework/values/Numbers.h"
#include "globals/Module1.h"
#include "panel/Pictures.h"
#include "panel/RowLayout.h"
#include "panel/RowPainting.h"

namespace kqu {

using namespace rowlayout;

namespace {
/// A backup of this type goes to an image file.
constexpr std::int32_t imageBackup = 4;

Ref<Picture> BackupIcon(bool isFolder) {
    if (Module1.ParentIsMarlstone)
        return isFolder ? MPR_ScheduleFolderBackup_f() : MPR_ScheduleBackup_f();
    return isFolder ? FolderBackupToolBar_f() : BackupToolBar_f();
}

/// Only the destination gives way, never its label. Room is kept for the label of an image file
/// even where the shorter label of another destination is drawn.
std::string BackupHeading(const RowPainting& row, bool isFolder, int slot) {
    const std::string destination =
        row.Has("destination") ? row.TextOf("destination") : std::string("unknown");
    const std::string label = isFolder ? "To Image File: " : "To Image File on: ";
    const int allowance = ToInt32(row.picture.StringWidth(label) - labelOverlap);
    // This one limit is counted from the panel's width, not from the list's.
    const int limit = row.panel.Width() - (destinationMargin + (textLeft + slot) + allowance);
    const std::string shortened = row.panel.TruncText(destination, limit, 0);
    const bool isImage = row.Has("type") && row.record.Value("type").Int32Value() == imageBackup;
    return (isImage ? label : "Destination: ") + shortened;
}
} // namespace

int PaintBackupRow(const RowPainting& row) {
    // Being there is what counts, whatever the value.
    const bool isFolder = row.Has("FolderBackup");
    const int slot = SlotOf(BackupToolBar_f());
    row.DrawIcon(BackupIcon(isFolder));
    row.DrawLine(BackupHeading(row, isFolder, slot), slot, headingLine);
    if (row.Has("Status"))
        row.DrawLine(row.Shortened("Status: " + row.TextOf("Status"), lineMargin), slot,
                     statusLine);
    if (row.Has("volume"))
        row.DrawLine(row.Shortened("Backing up: " + row.TextOf("volume"), lineMargin), slot,
                     topLine);
    return slot;
}

} // namespace kqu

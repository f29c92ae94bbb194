#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

namespace kqu {

void Window1::ParseBackgroundBackupNotification(const std::string& name,
                                                const Ref<CFDictionary>& userInfo) {
    const Ref<Dictionary> row = FindRow(*MyWindowEventList->MyDict, name);
    if (!row || !userInfo)
        return;
    // Unlike the other tools, a backup may report a lower progress. This is meant.
    TakeLastNumber(*row, "progress", *userInfo, kCFScanProgressKey->Text());
    KeepFirstText(*row, "Extra", *userInfo, kCFExtraItemKey->Text());
    TakeLastText(*row, "Status", *userInfo, "status");
    TakeLastNumber(*row, "PID", *userInfo, kCFPIDKey->Text());
    // Only the presence of the key counts, not its value.
    if (userInfo->ContainsKey("FolderBackup"))
        row->SetValue("FolderBackup", true);
    SetTask(*row, TaskCode::Backup);
    TakeLastNumber(*row, "type", *userInfo, "Type");
    KeepFirstText(*row, "volume", *userInfo, "VolName");
    if (!row->HasKey("destination"))
        if (const auto destination = WireText(*userInfo, "dVolName"))
            // One pass from the left: a run of three slashes leaves two.
            row->SetValue("destination", Showable(ReplaceAll(*destination, "//", "/")));
    KeepFirstText(*row, "BSD", *userInfo, "BSD");
}

} // namespace kqu

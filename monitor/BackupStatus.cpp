#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

namespace kqu {

void Window1::ParseBackgroundBackupNotification(const std::string& name,
                                                const Ref<CFDictionary>& userInfo) {
    const Ref<Dictionary> row = FindRow(*MyWindowEventList->MyDict, name);
    if (!row || !userInfo)
        return;
    // The last value wins, also a lower one: a backup may show its progress falling.
    TakeLastNumber(*row, "progress", *userInfo, kCFScanProgressKey->Text());
    KeepFirstText(*row, "Extra", *userInfo, kCFExtraItemKey->Text());
    TakeLastText(*row, "Status", *userInfo, "status");
    TakeLastNumber(*row, "PID", *userInfo, kCFPIDKey->Text());
    // Its presence is all that counts, and it stays for good.
    if (userInfo->ContainsKey("FolderBackup"))
        row->SetValue("FolderBackup", true);
    SetTask(*row, TaskCode::Backup);
    TakeLastNumber(*row, "type", *userInfo, "Type");
    KeepFirstText(*row, "volume", *userInfo, "VolName");
    if (!row->HasKey("destination"))
        if (const auto destination = WireText(*userInfo, "dVolName"))
            // One pass from the left: a run of three slashes leaves two.
            row->SetValue("destination", ReplaceAll(*destination, "//", "/"));
    KeepFirstText(*row, "BSD", *userInfo, "BSD");
}

} // namespace kqu

#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

namespace kqu {

void Window1::ParseBackgroundScannerNotification(const std::string& name,
                                                 const Ref<CFDictionary>& userInfo) {
    const Ref<Dictionary> row = FindRow(*MyWindowEventList->MyDict, name);
    if (!row || !userInfo)
        return;
    if (const auto progress = WireText(*userInfo, kCFScanProgressKey))
        RaiseProgress(*row, Val(*progress));
    KeepFirstText(*row, "Extra", *userInfo, kCFExtraItemKey->Text());
    TakeLastText(*row, "Status", *userInfo, kCFScanItemKey->Text());
    TakeLastNumber(*row, "PID", *userInfo, kCFPIDKey->Text());
    SetTask(*row, TaskCode::Scanner);
    // As text, unlike a backup's type.
    TakeLastText(*row, "type", *userInfo, kCFScanTypeKey->Text());
    KeepFirstText(*row, "volume", *userInfo, "VolName");
    KeepFirstText(*row, "BSD", *userInfo, "BSD");
}

} // namespace kqu

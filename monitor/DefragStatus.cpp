#include "framework/values/Text.h"
#include "monitor/DefragVolume.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

namespace kqu {

namespace {
constexpr double wholeFork = 100.0;
constexpr double perMille = 1000.0;
const std::string checkingText = "Checking File Fragmentation...";

/// Whether the tool moves files now, and does not only look at them. "check" is tested first, so it
/// wins where a text has both words. This order is meant.
bool IsDefragmenting(const std::string& status) {
    return !Contains(status, "check") && Contains(status, "defrag");
}

std::string ForkText(double percent) {
    if (percent >= wholeFork)
        return checkingText;
    // The mask prints no digit for what rounds to zero, hence the written zero below; a percentage
    // between 0 and a half shows two blanks, which is accepted.
    if (percent > 0.0)
        return "Defragging Fork: " + Format(percent, "#") + " % Complete";
    return "Defragging Fork: 0 % Complete";
}

} // namespace

void Window1::ParseBackgroundDefragNotification(const std::string& name,
                                                const Ref<CFDictionary>& userInfo) {
    const Ref<Dictionary> row = FindRow(*MyWindowEventList->MyDict, name);
    if (!row || !userInfo)
        return;
    // Of this notification alone; no phase is kept from one to the next.
    const auto status = WireText(*userInfo, kCFDefragStatusKey);
    const bool isDefragmenting = status && IsDefragmenting(*status);
    if (const auto file = WireText(*userInfo, kCFDefragFileNameKey))
        row->SetValue("Status", "File: " + Showable(*file));
    const auto fork =
        isDefragmenting ? WireText(*userInfo, kCFDefragFileProgressKey) : std::nullopt;
    row->SetValue("fileprogress", ForkText(fork ? Val(*fork) : wholeFork));
    TakeLastNumber(*row, "PID", *userInfo, kCFPIDKey->Text());
    SetTask(*row, TaskCode::Defragmenter);
    const auto examined = WireText(*userInfo, kCFDefragNumFilesExaminedKey);
    const double filesExamined = examined ? Val(*examined) : 0.0;
    KeepFirstText(*row, "Extra", *userInfo, kCFExtraItemKey->Text());
    if (!row->HasKey("volume"))
        if (const auto disk = WireText(*userInfo, "BSD"))
            ResolveVolume(*row, *disk);
    // No upper limit, and no guard against a volume without files: the value stands as it falls
    // out of the division.
    if (row->HasKey("TotalFiles"))
        RaiseProgress(*row, filesExamined * perMille / row->Value("TotalFiles").DoubleValue());
}

} // namespace kqu

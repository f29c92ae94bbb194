#include "framework/values/Text.h"
#include "globals/Module1.h"
#include "panel/Pictures.h"
#include "panel/RowLayout.h"
#include "panel/RowPainting.h"

namespace kqu {

using namespace rowlayout;

namespace {
struct Wording {
    /// Never shortened.
    const char* heading;
    const char* statusPrefix;
};

/// The type is compared as text: "00" is not a scan of files.
Wording WordingOf(const RowPainting& row) {
    if (!row.Has("type"))
        return {"Scanning Sectors...", "Item: "};
    if (EqualsIgnoringCase(row.TextOf("type"), "0"))
        return {"Scanning File Sectors...", "File: "};
    return {"Scanning Volume Sectors...", "Sector: "};
}
} // namespace

int PaintScannerRow(const RowPainting& row) {
    const int slot = SlotOf(DefragToolBar());
    row.DrawIcon(Module1.ParentIsMarlstone ? MPR_ScheduleScanner_f() : DefragToolBar());
    const Wording wording = WordingOf(row);
    row.DrawLine(wording.heading, slot, headingLine);
    if (row.Has("Status"))
        row.DrawLine(row.Shortened(wording.statusPrefix + row.TextOf("Status"), lineMargin), slot,
                     statusLine);
    if (row.Has("volume"))
        row.DrawLine(row.Shortened("Volume: " + row.TextOf("volume"), lineMargin), slot, topLine);
    return slot;
}

} // namespace kqu

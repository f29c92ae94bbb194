#include "globals/Module1.h"
#include "panel/Pictures.h"
#include "panel/RowLayout.h"
#include "panel/RowPainting.h"

namespace kqu {

using namespace rowlayout;

int PaintDefragRow(const RowPainting& row) {
    const int slot = SlotOf(NewDefragToolBar_f());
    row.DrawIcon(Module1.ParentIsMarlstone ? MPR_ScheduleDefrag_f() : NewDefragToolBar_f());
    const std::string heading =
        row.Has("fileprogress") ? row.TextOf("fileprogress") : std::string("Defragging Files...");
    row.DrawLine(row.Shortened(heading, defragHeadingMargin), slot, headingLine);
    // The record holds the status as it is to be read, label and all.
    if (row.Has("Status"))
        row.DrawLine(row.Shortened(row.TextOf("Status"), lineMargin), slot, statusLine);
    if (row.Has("volume"))
        row.DrawLine(row.Shortened("Volume: " + row.TextOf("volume"), lineMargin), slot, topLine);
    return slot;
}

} // namespace kqu

#include "panel/RowPainting.h"

#include "framework/values/Object.h"
#include "panel/RowLayout.h"
#include "panel/TaskCode.h"

// The list: every row from the task table into one picture, and the picture to the canvas at the
// scroll position. Each paint begins anew.

namespace kqu {

using namespace rowlayout;

namespace {
int RowCount(const Ref<Dictionary>& table) {
    const int count = table && table->Count() > 0 ? table->Count() : 0;
    return count < 1 ? 1 : count;
}

void PaintStripe(Window1& panel, Graphics& picture, int row) {
    const int top = row * panel.TheRowHeight;
    picture.SetForeColor(row % 2 == 0 ? evenStripe : oddStripe);
    // A height, not a bottom edge: each stripe reaches far below its own row, the next one paints
    // over it, and the last one floods the rest of the picture.
    picture.FillRect(0, top, panel.Width(), (row + 1) * panel.TheRowHeight + stripeOverlap);
    picture.DrawPicture(*Required(panel.MyWindowEventList->MySep), separatorLeft, top,
                        panel.Width() + separatorExcess, separatorHeight, 0, 0, 1, 1);
}

int PaintByTask(const RowPainting& row) {
    if (!row.Has("task"))
        return 0;
    switch (static_cast<TaskCode>(row.record.Value("task").Int32Value())) {
    case TaskCode::Backup:
        return PaintBackupRow(row);
    case TaskCode::Scanner:
        return PaintScannerRow(row);
    case TaskCode::Defragmenter:
        return PaintDefragRow(row);
    default:
        return 0;
    }
}

void PaintRow(Window1& panel, Graphics& picture, Graphics& canvas, int row) {
    PaintStripe(panel, picture, row);
    const Ref<Dictionary> table = panel.MyWindowEventList->MyDict;
    if (!table || row >= table->Count())
        return;
    const auto record = table->Value(table->Key(row)).ObjectAs<Dictionary>();
    if (!record)
        return;
    picture.SetForeColor(textColour);
    const RowPainting painting{panel, *record, picture, canvas, row * panel.TheRowHeight};
    const int slot = PaintByTask(painting);
    // Every row may have a bar and a badge, also one of an unknown tool.
    PaintProgressPart(painting, slot);
    PaintBadge(painting);
}

/// Where the picture of all rows stands on the canvas. The scroll bar counts whole rows.
int ScrolledBy(Window1& panel) {
    ScrollBar& bar = *panel.ScrollBar1;
    if (bar.Value() <= 0)
        return 0;
    if (bar.Maximum() < bar.Value())
        bar.SetValue(bar.Maximum());
    return -(bar.Value() * panel.TheRowHeight);
}

/// Copies what is in sight of all rows to the canvas, and the grip on top of it.
void ShowList(Window1& panel, Graphics& g, const Picture& list) {
    const Ref<Picture> shown = NewPicture(panel.MyWindowEventList->Width(),
                                          panel.MyWindowEventList->Height(), pictureDepth);
    const int offset = ScrolledBy(panel);
    g.DrawPicture(list, 0, offset);
    shown->Graphics().DrawPicture(list, 0, offset);
    // The grip stands on the stripe at the bottom left of what is visible.
    panel.thedragcolor = shown->Graphics().Pixel(0, shown->Height() - 1);
    if (panel.MyDragPict)
        panel.Canvas1_Paint(*panel.Canvas1->Graphics());
}
} // namespace

void Window1::MyWindowEventList_Paint(Graphics& g) {
    if (!startupdone)
        return;
    g.SetTextSize(textSize);
    const int rows = RowCount(MyWindowEventList->MyDict);
    const Ref<Picture> list = NewPicture(Width(), rows * TheRowHeight + Height(), pictureDepth);
    list->Graphics().SetTextSize(textSize);
    // The stripes go on below the last row. The panel's height is read anew for each row.
    for (int row = 0;; ++row) {
        const double bound = (rows - 1) + (static_cast<double>(Height()) / TheRowHeight + 1.0);
        if (bound < row)
            break;
        PaintRow(*this, list->Graphics(), g, row);
    }
    ShowList(*this, g, *list);
}

void RowPainting::DrawIcon(const Ref<Picture>& icon) const {
    picture.DrawPicture(*Required(icon), iconLeft, top + iconTop);
}

void RowPainting::DrawLine(const std::string& text, int slot, int baseline) const {
    picture.DrawString(text, textLeft + slot, top + baseline);
}

std::string RowPainting::Shortened(const std::string& text, int margin) const {
    return panel.TruncText(text, ListWidth() - margin, 0);
}

int SlotOf(const Ref<Picture>& reference) {
    return Required(reference)->Width() + slotGap;
}

} // namespace kqu

#include "framework/values/Numbers.h"
#include "framework/values/Text.h"
#include "panel/RowLayout.h"
#include "panel/RowPainting.h"

namespace kqu {

using namespace rowlayout;

namespace {
/// Progress is kept in tenths of a percent.
constexpr double perPercent = 10.0;
constexpr double fullPercent = 100.0;
} // namespace

void PaintProgressPart(const RowPainting& row, int slot) {
    if (!row.Has("progress"))
        return;
    const double percent = row.record.Value("progress").DoubleValue() / perPercent;
    row.panel.MyWindowEventList->ListProgress(row.ListWidth() - barMargins - slot, percent,
                                              fullPercent, row.record);
    const std::string text = Format(percent, "##0.00") + " %";
    if (row.Has("progresspict"))
        if (const auto bar = row.record.Value("progresspict").ObjectAs<Picture>())
            row.picture.DrawPicture(*bar, textLeft + slot, row.top + barTop);
    // Measured on the canvas, drawn on the picture.
    const int width = ToInt32(row.canvas.StringWidth(text));
    row.picture.DrawString(text, row.ListWidth() - percentRight - width, row.top + headingLine);
}

} // namespace kqu
